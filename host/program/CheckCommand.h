// The command "check": starts everything that a registry configures, to find every problem, and
// runs nothing.
#pragma once

#include "base/ExitCode.h"

#include <filesystem>

namespace BAS {
class LogSink;
}

namespace host {

// Logs all problems and warnings and prints the verdict, or all of it as JSON, to standard output.
// The log files of the registry are left alone: the caller may be another user than the one that
// runs the host, and a host may be writing them.
ExitCode checkRegistry(std::filesystem::path const& registry, BAS::LogSink& log, bool isJson);

} // namespace host
