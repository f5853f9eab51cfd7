// What the caller of the program asks for.
#pragma once

#include "Command.h"
#include "ExitCode.h"

#include <filesystem>
#include <variant>
#include <vector>

namespace host {

struct CommandLine {
    enum class Verb { run, check };

    Verb verb = Verb::run;
    std::filesystem::path registry;
    std::vector<Command> atEnd; // of a run, in order
};

// Prints help, the version or what is wrong, and then gives the exit code.
std::variant<CommandLine, ExitCode> parseCommandLine(int argc, char const* const* argv);

} // namespace host
