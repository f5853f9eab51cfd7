// Executes a command and describes the outcome.
#pragma once

#include "BAS/Status.h"
#include "base/FairLock.h"
#include "commands/Command.h"
#include "commands/CommandTimer.h"
#include "commands/NamedFiles.h"

#include <chrono>
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
    // A key that the object didn't read; perhaps mistyped.
    struct IgnoredKey {
        std::string name;
        std::optional<std::string> nearest; // of those that the object asked for, if one is near
    };

    std::string object;
    std::vector<Key> keys;
    std::vector<IgnoredKey> ignoredKeys;
    bool isHandled = false;
    bool isWorkDone = false;
    // Set when the object doesn't exist or threw.
    std::optional<std::string> fault;
    // The object's status, if the command changed it or the object rejected the command.
    std::optional<BAS::Status> status;
    std::vector<NamedFile> files;
    std::chrono::system_clock::time_point time = std::chrono::system_clock::now();
    double seconds = 0; // of the object's work

    // The sender got what was asked for, as far as that is known.
    bool isFaultless() const;
};

// The result of a command before it is executed.
CommandResult begunResult(Command const& command);
// The keys of the update that weren't read yet. Those that were asked for in vain may be near, in
// the update or in the command from which it was made.
std::vector<CommandResult::IgnoredKey> keysNotAsked(BAS::RegistryEntry const& update,
                                                    BAS::RegistryEntry const& command);

// Keys and values as they were given on a command line.
std::string keysText(CommandResult const& result);

// What stands around a command.
struct CommandRoom {
    FairLock* pipelineLock; // of the object's pipeline, if it has one: keeps batches away
    WriteWatch& watch;      // notices what the object writes
    CommandTimer& timer;
};

// Passes the command to its object, and waits until the reports that are collected are at their
// places; the pipeline waits for the object only. Throws nothing: what the object throws is the
// result's fault.
CommandResult executeCommand(Command const& command, BAS::RegisteredObject& object,
                             CommandRoom const& room);

// The result of a command that couldn't be executed, with the reason.
CommandResult unexecutedCommand(Command const& command, std::string reason);

} // namespace host
