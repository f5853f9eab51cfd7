// Statuses and texts for failures of the operating system, of plug-ins, and of a whole start.
#pragma once

#include "base/MessageCatalogue.h"

#include <filesystem>
#include <string>
#include <vector>

namespace host {

// Thrown when the host can't start: all problems, in order. Never empty.
struct StartFailure {
    std::vector<BAS::Status> problems;
};

// The message with the file's path and the text of the error number.
BAS::Status fileStatus(MessageName name, std::filesystem::path const& file, int error);

// For an operation that has no file.
BAS::Status systemStatus(char const* operation, int error);

// The text of the exception that is being handled. Only within a catch block.
std::string currentExceptionText();

} // namespace host
