// A command for one registered object: a registry update, and where its reports may go.
#pragma once

#include "BAS/RegistryEntry.h"

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace host {

// A directory below which reports lie, and the group that may read them. Nobody else than the host
// writes there.
struct ReportRoom {
    std::filesystem::path directory; // absolute
    gid_t group;
};

struct Command {
    // Named after the object; its children are the keys of the command.
    BAS::RegistryEntry update;
    // Gives a new path for each report that goes to the sender, or throws a BAS::Status; without it
    // none can.
    std::function<std::filesystem::path()> reportForSender = {};
    // If given, every value that isn't empty names a report there; stays its owner's.
    ReportRoom const* room = nullptr;
    // If given, it isn't begun any more from then on.
    std::optional<std::chrono::steady_clock::time_point> latest = {};
};

// From a text OBJECT KEY[=VALUE]... with blanks between the parts; a part, or a piece of one, that
// has blanks must be in single or double quotes. Throws std::invalid_argument with the reason.
Command parseCommand(std::string_view text);
// From the parts.
Command parseCommand(std::span<std::string const> words);

// The value that asks for a report to go to the sender.
inline constexpr std::string_view senderValue = "@-";
std::size_t senderReports(Command const& command);
bool hasSenderReport(Command const& command);

// That a command has. Each takes two threads and some descriptors.
inline constexpr std::size_t mostReports = 32;

} // namespace host
