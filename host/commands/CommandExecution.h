// Carries out a command, and tells what became of it.
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
    std::vector<std::string> ignoredKeys; // the object never asked for them; mistyped perhaps
    bool isHandled = false;
    bool isWorkDone = false;
    // Why the object had no say: it doesn't exist, or it threw.
    std::optional<std::string> fault;
    // The object's status, if the command changed it or the object rejected the command.
    std::optional<BAS::Status> status;
    std::vector<NamedFile> files;
    double seconds = 0; // of the object's work
};

// The result of a command that is taken up, with what is known of it by then.
CommandResult begunResult(Command const& command);
// Those that nobody has asked for yet.
std::vector<std::string> keysNotAsked(Command const& command);

// Hands the command to its object. The lock of the object's pipeline, if it has one, keeps batches
// away meanwhile; the watch notices what the command writes. Throws nothing: what the object throws
// is the result's fault.
CommandResult executeCommand(Command const& command, BAS::RegisteredObject& object,
                             FairLock* pipelineLock, WriteWatch& watch);

// The result of a command that no object had a say in, with the reason.
CommandResult unexecutedCommand(Command const& command, std::string reason);

} // namespace host
