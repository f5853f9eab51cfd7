// Gives a running host a command, through its command directory, and waits for the result.
#pragma once

#include "base/ExitCode.h"
#include "commands/Command.h"

#include <chrono>
#include <filesystem>

namespace host {

// Prints the result and removes its file. When no host answers in time, or a signal comes first,
// the command is withdrawn unless a host has taken it, and the outcome is reported on standard
// error. Throws a BAS::Status when the command can't be written or the result can't be read.
ExitCode sendCommand(std::filesystem::path const& directory, Command const& command,
                     std::chrono::duration<double> timeout);

} // namespace host
