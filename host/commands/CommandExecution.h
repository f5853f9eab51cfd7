// Executes a command and describes the outcome.
#pragma once

#include "BAS/Status.h"
#include "base/FairLock.h"
#include "commands/Command.h"
#include "commands/NamedFiles.h"

#include <optional>
#include <string>
#include <vector>

namespace BAS {
class RegisteredObject;
}

namespace host {

struct CommandResult {
    struct Key {
        std::string name;
        std::string value;
    };

    std::string object;
    std::vector<Key> keys;
    std::vector<std::string> ignoredKeys; // that the object didn't read; perhaps mistyped
    bool isHandled = false;
    bool isWorkDone = false;
    // Set when the object doesn't exist or threw.
    std::optional<std::string> fault;
    // The object's status, if the command changed it or the object rejected the command.
    std::optional<BAS::Status> status;
    std::vector<NamedFile> files;
    double seconds = 0; // of the object's work
};

// The result of a command before it is executed.
CommandResult begunResult(Command const& command);
// The keys that weren't read yet.
std::vector<std::string> keysNotAsked(Command const& command);

// Passes the command to its object. The lock of the object's pipeline, if it has one, is held, so
// that no batch runs; the watch notices which files are written. Throws nothing: what the object
// throws is the result's fault.
CommandResult executeCommand(Command const& command, BAS::RegisteredObject& object,
                             FairLock* pipelineLock, WriteWatch& watch);

// The result of a command that couldn't be executed, with the reason.
CommandResult unexecutedCommand(Command const& command, std::string reason);

} // namespace host
