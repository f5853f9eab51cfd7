#include "commands/CommandReport.h"

#include "base/EscapedText.h"
#include "base/LogFile.h"
#include "base/MessageCatalogue.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace host {

namespace {

// A key and its value, which JSON and YAML both read.
using Members = std::vector<std::pair<std::string_view, std::string>>;

std::string verdictOf(CommandResult const& result) {
    return result.fault ? "not handled" : result.isHandled ? "handled" : "rejected";
}

std::string keysText(CommandResult const& result) {
    std::string text;
    for (auto const& key : result.keys) {
        text += (text.empty() ? "" : " ") + key.name;
        if (!key.value.empty()) {
            text += "=" + key.value;
        }
    }
    return text;
}

std::string fileText(NamedFile const& file) {
    return file.isOpened
               ? fmt::format("{} wrote '{}', {} bytes", file.key, file.path.string(), file.size)
               : fmt::format("{} didn't write '{}': {}", file.key, file.path.string(), file.reason);
}

std::string joined(std::vector<std::string> const& parts) {
    return fmt::format("{}", fmt::join(parts, ", "));
}

std::string object(Members const& members) {
    std::vector<std::string> parts;
    for (auto const& [key, value] : members) {
        parts.push_back(quotedText(key) + ": " + value);
    }
    return "{" + joined(parts) + "}";
}

std::string keysObject(CommandResult const& result) {
    std::vector<std::string> parts;
    for (auto const& key : result.keys) {
        parts.push_back(quotedText(key.name) + ": " + quotedText(key.value));
    }
    return "{" + joined(parts) + "}";
}

std::string truth(bool value) {
    return value ? "true" : "false";
}

std::string statusObject(BAS::Status const& status) {
    return object({{"Message", quotedText(status.messageName().view())},
                   {"Level", quotedText(levelName(status.severity()))},
                   {"Text", quotedText(messageText(status))}});
}

std::string filesArray(std::vector<NamedFile> const& files) {
    std::vector<std::string> parts;
    for (auto const& file : files) {
        Members members = {{"Key", quotedText(file.key)},
                           {"Path", quotedText(file.path.string())},
                           {"Opened", truth(file.isOpened)}};
        if (file.isOpened) {
            members.emplace_back("Size", std::to_string(file.size));
        } else {
            members.emplace_back("Reason", quotedText(file.reason));
        }
        parts.push_back(object(members));
    }
    return "[" + joined(parts) + "]";
}

std::string namesArray(std::vector<std::string> const& names) {
    std::vector<std::string> parts;
    parts.reserve(names.size());
    for (auto const& name : names) {
        parts.push_back(quotedText(name));
    }
    return "[" + joined(parts) + "]";
}

Members membersOf(CommandResult const& result) {
    Members members = {{"Object", quotedText(result.object)},
                       {"Keys", keysObject(result)},
                       {"Verdict", quotedText(verdictOf(result))}};
    if (result.fault) {
        members.emplace_back("Reason", quotedText(*result.fault));
    }
    members.emplace_back("WorkDone", truth(result.isWorkDone));
    if (!result.ignoredKeys.empty()) {
        members.emplace_back("Ignored", namesArray(result.ignoredKeys));
    }
    if (result.status) {
        members.emplace_back("Status", statusObject(*result.status));
    }
    members.emplace_back("Files", filesArray(result.files));
    members.emplace_back("Seconds", fmt::format("{:.6f}", result.seconds));
    return members;
}

std::string fileHead(std::string_view commandFile, bool isHandled) {
    return fmt::format("Command: {}\nHandled: {}\n", quotedText(commandFile), isHandled);
}

} // namespace

std::string resultText(CommandResult const& result) {
    auto text = fmt::format("{} {}: {}, {}", result.object, keysText(result),
                            verdictOf(result) + (result.fault ? ", " + *result.fault : ""),
                            result.isWorkDone ? "work done" : "no work done");
    if (!result.ignoredKeys.empty()) {
        text += ", ignored " + fmt::format("{}", fmt::join(result.ignoredKeys, " "));
    }
    if (result.status) {
        text += ", status " + statusText(*result.status);
    }
    for (auto const& file : result.files) {
        text += ", " + fileText(file);
    }
    return fmt::format("{}, {:.3f} s", text, result.seconds);
}

std::string resultJson(CommandResult const& result) {
    return object(membersOf(result));
}

std::string resultFileText(std::string_view commandFile,
                           std::vector<CommandResult> const& results) {
    bool const areHandled = std::all_of(results.begin(), results.end(),
                                        [](auto const& result) { return result.isHandled; });
    auto text = fileHead(commandFile, areHandled) + "Results:\n";
    for (auto const& result : results) {
        char const* lead = "  - ";
        for (auto const& [key, value] : membersOf(result)) {
            text += fmt::format("{}{}: {}\n", lead, key, value);
            lead = "    ";
        }
    }
    return text;
}

std::string problemFileText(std::string_view commandFile,
                            std::vector<std::string> const& problems) {
    auto text = fileHead(commandFile, false) + "Problems:\n";
    for (auto const& problem : problems) {
        text += "  - " + quotedText(problem) + "\n";
    }
    return text;
}

} // namespace host
