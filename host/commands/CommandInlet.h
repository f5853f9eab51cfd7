// The ways by which commands reach a host. What the user of the host and root put into the command
// directory may do whatever the host may. The members of a group have a directory of their own
// below it; their commands write reports into one directory and nowhere else.
//
//  - COMMANDS: commands and answers of the user of the host and of root; passable for the group.
//  - COMMANDS/drop: the group puts its commands there.
//  - COMMANDS/answers: taken commands of the group and their results, which it may read.
#pragma once

#include "commands/Command.h"
#include "registry/Registry.h"

#include <filesystem>
#include <optional>
#include <vector>

namespace host {

struct CommandInlet {
    std::filesystem::path directory; // command files are put there
    std::filesystem::path answers;   // what the host makes of them; may be the same directory
    std::optional<ReportRoom> room;  // if the senders may write reports there only

    bool isOfGroup() const noexcept { return room.has_value(); }
};

// Those of a host, none without a command directory. Throws a BAS::Status when the group doesn't
// exist.
std::vector<CommandInlet> commandInlets(HostConfiguration const& configuration);

// The one that the calling user has. The command directory must be configured. Throws likewise.
CommandInlet inletOfCaller(HostConfiguration const& configuration);

// Throws a BAS::Status when a directory can't be used, or when others than its senders can put
// files there or change what the host makes of them.
void requireSafe(CommandInlet const& inlet);

} // namespace host
