// Commands that go to all hosts of a stream. Their sender knows no path on any of the hosts, and
// must not be able to write there: the report of a key with the value "@" goes to the sender, and
// every other value is a number or one of few words.
#pragma once

#include "commands/Command.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace host {

inline constexpr std::string_view sharedReportValue = "@";

// How many reports for the sender the command asks for.
std::size_t sharedReports(Command const& command);
// Why the command can't go to all hosts, if it can't.
std::optional<std::string> objectionToSharing(Command const& command);

// From the text of a command file with one command, as it is carried out on this host. Throws a
// StartFailure with the problems of the text, or a BAS::Status when the command can't go to all
// hosts.
Command sharedCommand(std::string const& text, std::function<std::filesystem::path()> report);

} // namespace host
