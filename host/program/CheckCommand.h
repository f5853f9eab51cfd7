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

// Prints the objects to which commands can be sent, one a line with its module, or "-" for the data
// pool. Throws a StartFailure or a BAS::Status when the file is no sound registry.
ExitCode listObjects(std::filesystem::path const& registry);

} // namespace host
