// The command "check": starts everything that a registry configures, to find all that is wrong with
// it, and runs nothing.
#pragma once

#include "base/ExitCode.h"

#include <filesystem>

namespace BAS {
class LogSink;
}

namespace host {

// Everything that is found goes to the log, which stays the caller's, and the verdict to standard
// output. The log files of the registry are left alone: who checks may be another user than the one
// that runs the host, and a host may be writing them.
ExitCode checkRegistry(std::filesystem::path const& registry, BAS::LogSink& log);

} // namespace host
