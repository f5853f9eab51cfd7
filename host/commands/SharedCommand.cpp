#include "commands/SharedCommand.h"

#include "base/MessageCatalogue.h"
#include "base/WholeFile.h"
#include "commands/CommandFile.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>

namespace host {

namespace {

constexpr char const* textName = "the command to all hosts";
// An object could take any other text for the name of a file and make it.
constexpr std::array<std::string_view, 4> plainWords = {"", "force", "true", "false"};

bool isPlain(std::string_view value) {
    if (std::find(plainWords.begin(), plainWords.end(), value) != plainWords.end()) {
        return true;
    }
    auto const digits = value.starts_with('-') ? value.substr(1) : value;
    return !digits.empty() && digits.find_first_not_of("0123456789") == std::string_view::npos;
}

BAS::Status refusal(std::string const& reason) {
    return makeStatus(BAS::Status::error, {}, "ERR_COMMAND_MALFORMED", {textName, reason});
}

// Such a value could still be the name of a file in the directory in which the host runs.
void requireNoFile(BAS::RegistryEntry const& key) {
    struct stat found = {};
    if (!key.value().isNull() && ::lstat(key.value().str().c_str(), &found) == 0) {
        throw refusal(
            fmt::format("'{}={}' names a file of the host", key.name().view(), key.value().view()));
    }
}

} // namespace

std::size_t sharedReports(Command const& command) {
    auto const& keys = command.update.children();
    return static_cast<std::size_t>(std::count_if(keys.begin(), keys.end(), [](auto const& key) {
        return key->value().view() == sharedReportValue;
    }));
}

std::optional<std::string> objectionToSharing(Command const& command) {
    for (auto const& key : command.update.children()) {
        auto const value = key->value().view();
        if (value != sharedReportValue && !isPlain(value)) {
            return fmt::format("'{}={}' may be a path; a command to all hosts takes '{}' for a "
                               "report to the sender, a whole number, 'true', 'false', 'force' or "
                               "nothing",
                               key->name().view(), value, sharedReportValue);
        }
    }
    if (sharedReports(command) > 1) {
        return fmt::format("a command to all hosts has at most one '{}'", sharedReportValue);
    }
    return std::nullopt;
}

Command sharedCommand(std::string const& text, std::function<std::filesystem::path()> report) {
    auto const commands = parseCommandFile(text, textName);
    if (commands.size() != 1) {
        throw refusal("expected one object");
    }
    if (auto const objection = objectionToSharing(commands.front())) {
        throw refusal(*objection);
    }
    auto const& given = commands.front().update;
    Command command{BAS::RegistryEntry(given.name())};
    for (auto const& key : given.children()) {
        if (key->value().view() == sharedReportValue) {
            command.update.add(key->name(), std::string(senderValue));
        } else {
            requireNoFile(*key);
            command.update.add(key->name(), key->value());
        }
    }
    command.reportForSender = std::move(report);
    return command;
}

} // namespace host
