// A command for one registered object: a registry update, and where its reports may go.
#pragma once

#include "BAS/RegistryEntry.h"

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace host {

// A directory below which the reports of a command lie, and the group that may read them.
struct ReportRoom {
    std::filesystem::path directory; // only the host can write there
    gid_t group;
};

struct ReportPlaces {
    // A new path for a report that goes to the sender, for each; without it none can.
    std::function<std::filesystem::path()> forSender = {};
    // Every value that isn't empty names a file in that room; without it anything goes.
    std::optional<ReportRoom> room = {};
};

struct Command {
    // Named after the object; its children are the keys of the command.
    BAS::RegistryEntry update;
    ReportPlaces places = {};
};

// From a text OBJECT KEY[=VALUE]... with blanks between the parts; a part, or a piece of one, that
// has blanks must be in single or double quotes. Throws std::invalid_argument with the reason.
Command parseCommand(std::string_view text);
// From the parts.
Command parseCommand(std::span<std::string const> words);

// The value that asks for a report to go to the sender.
inline constexpr std::string_view senderValue = "@-";
bool hasSenderReport(Command const& command);

} // namespace host
