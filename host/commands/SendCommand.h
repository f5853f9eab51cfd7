// Gives a running host a command, through its command directory, and waits for the result.
#pragma once

#include "base/ExitCode.h"
#include "commands/Command.h"
#include "commands/CommandInlet.h"

#include <chrono>
#include <filesystem>

namespace host {

enum class ResultForm { yaml, json };

// Puts the command into that inlet, prints the result, and has its file removed. A report that the
// command has for its sender goes to standard output, and the result to standard error then. When
// no host answers in time, or a signal comes first, the command is withdrawn unless a host has
// taken it, and the outcome is reported on standard error. Throws a BAS::Status when the command
// can't be written or the result can't be read.
ExitCode sendCommand(CommandInlet const& inlet, Command const& command,
                     std::chrono::duration<double> timeout, ResultForm form);

} // namespace host
