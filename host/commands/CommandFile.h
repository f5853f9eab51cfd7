// Command files: one mapping of registered objects to the keys and values of their updates.
#pragma once

#include "base/FileDescriptor.h"
#include "commands/Command.h"

#include <filesystem>
#include <string>
#include <vector>

namespace host {

// The result of a command file has its name with the other suffix.
inline constexpr char const* commandSuffix = ".yaml";
inline constexpr char const* resultSuffix = ".result";
// An empty file with that suffix tells that its sender, who can't remove them, has got the result
// and the reports.
inline constexpr char const* fetchedSuffix = ".fetched";
// Of the file's reports for its sender, which count from 1. One that isn't whole keeps its number
// and doesn't exist.
std::string reportSuffix(std::size_t number);
// Removes the result of a command file with one command, and its reports; the base is their path
// without suffix.
void removeAnswer(std::string const& base);

// The bytes of a file that others put there. Throws a BAS::Status when it can't be read or has
// more than 1 MiB; messages use the given name for it.
std::string readCommandBytes(FileDescriptor const& file, std::string const& name);

// The commands in the order of the file, at least one. Throws a StartFailure with all problems of
// the file and their places, or a BAS::Status when it can't be read. Messages use the given name
// for the file.
std::vector<Command> readCommandFile(std::filesystem::path const& file, std::string const& name);
// The same of a file's bytes.
std::vector<Command> parseCommandFile(std::string const& bytes, std::string const& name);

std::string commandFileText(Command const& command);

} // namespace host
