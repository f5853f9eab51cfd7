// Command files: one mapping of registered objects to the keys and values of their updates.
#pragma once

#include "commands/Command.h"

#include <filesystem>
#include <string>
#include <vector>

namespace host {

// What begins the name of a command file takes another suffix for its result.
inline constexpr char const* commandSuffix = ".yaml";
inline constexpr char const* resultSuffix = ".result";

// The commands in the order of the file, at least one. Throws a StartFailure with everything that
// is wrong with the file, each with its place, or a BAS::Status when it can't be read. Messages
// call the file by the given name.
std::vector<Command> readCommandFile(std::filesystem::path const& file, std::string const& name);

std::string commandFileText(Command const& command);

} // namespace host
