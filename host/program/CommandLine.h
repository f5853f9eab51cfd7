// The parsed command line of the program.
#pragma once

#include "BAS/Status.h"
#include "base/ExitCode.h"
#include "commands/Command.h"
#include "generate/GenerateOptions.h"
#include "input/StreamLibrary.h"

#include <chrono>
#include <filesystem>
#include <optional>
#include <variant>
#include <vector>

namespace host {

struct CommandLine {
    enum class Verb { run, check, send, status, generate, stream, publish };

    Verb verb = Verb::run;
    std::filesystem::path registry;
    BAS::Status::Severity leastSeverity = BAS::Status::info; // of what is logged
    bool isJson = false;                                     // results and problems for programs
    bool isListingObjects = false;                           // rather than checking
    // Of a run:
    std::vector<Command> atEnd; // in order
    bool isQuiet = false;
    // Of send:
    std::optional<Command> sent;
    std::chrono::duration<double> timeout{30};
    GenerateOptions generate;
    std::optional<std::filesystem::path> collectedIn; // reports of all hosts
    // Of stream and publish, and of a send to all hosts:
    std::string pipeline;
    bool isCreating = false; // or else showing
    StreamLimits streamLimits;
    StreamSource streamSource;
};

// Returns an exit code after printing help, the version or an error.
std::variant<CommandLine, ExitCode> parseCommandLine(int argc, char const* const* argv);

} // namespace host
