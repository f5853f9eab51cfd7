// A command at run time: a registry update for one registered object, and what became of it.
#pragma once

#include "BAS/RegistryEntry.h"
#include "BAS/Status.h"

#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace host {

struct Command {
    // Bears the name of the object; the keys of the command stand directly below.
    BAS::RegistryEntry update;
};

struct CommandResult {
    std::string object;
    std::string keys; // as they were given
    bool isHandled = false;
    bool isWorkDone = false;
    // Why the object had no say: it doesn't exist, or it threw.
    std::optional<std::string> fault;
    // The object's status, if the command changed it.
    std::optional<BAS::Status> newStatus;
    double seconds = 0;
};

// From a text OBJECT KEY[=VALUE]... with blanks between the parts; a part, or a piece of one, that
// holds blanks stands in single or double quotes. Throws std::invalid_argument with what is wrong.
Command parseCommand(std::string_view text);

// Hands the command to its object. The lock of the object's pipeline, if it has one, keeps batches
// away meanwhile. Throws nothing: what the object throws is the result's fault.
CommandResult executeCommand(Command const& command, std::mutex* pipelineLock);

// The result on one line, for people.
std::string resultText(CommandResult const& result);

} // namespace host
