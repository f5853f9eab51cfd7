// Statuses for failures of the operating system.
#pragma once

#include "base/MessageCatalogue.h"

#include <filesystem>
#include <system_error>

namespace host {

// The message with the file's path and the text of the error number.
inline BAS::Status fileStatus(MessageName name, std::filesystem::path const& file, int error) {
    return makeStatus(BAS::Status::critical, {}, name,
                      {file.string(), std::generic_category().message(error)});
}

// For an operation that has no file.
inline BAS::Status systemStatus(char const* operation, int error) {
    return makeStatus(BAS::Status::critical, {}, "ERR_SYSTEM",
                      {operation, std::generic_category().message(error)});
}

} // namespace host
