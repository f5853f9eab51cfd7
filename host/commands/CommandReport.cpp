#include "commands/CommandReport.h"

#include "base/EscapedText.h"
#include "base/JsonText.h"
#include "base/MessageCatalogue.h"

#include <fmt/format.h>

#include <algorithm>

namespace host {

namespace {

std::string verdictOf(CommandResult const& result) {
    return result.fault ? "not handled" : result.isHandled ? "handled" : "rejected";
}

std::string fileText(NamedFile const& file) {
    auto const place = fmt::format("'{}'", file.path.string());
    if (!file.isOpened) {
        return fmt::format("{} didn't write {}: {}", file.key, place, file.reason);
    }
    auto written = fmt::format("{} wrote {}, {} bytes", file.key, place, file.size);
    switch (file.completeness) {
    case Completeness::whole:
        return written + ", complete";
    case Completeness::cut:
        return fmt::format("{}, not complete: {}", written, file.reason);
    case Completeness::unknown:
        break;
    }
    return written;
}

std::string completenessText(Completeness completeness) {
    return completeness == Completeness::whole ? "true"
           : completeness == Completeness::cut ? "false"
                                               : quotedText("unknown");
}

std::string filesArray(std::vector<NamedFile> const& files) {
    std::vector<std::string> parts;
    for (auto const& file : files) {
        JsonMembers members = {{"Key", quotedText(file.key)},
                               {"Path", quotedText(file.path.string())},
                               {"Opened", jsonTruth(file.isOpened)}};
        if (file.isOpened) {
            members.emplace_back("Size", std::to_string(file.size));
        }
        members.emplace_back("Complete", completenessText(file.completeness));
        if (!file.reason.empty()) {
            members.emplace_back("Reason", quotedText(file.reason));
        }
        parts.push_back(jsonObject(members));
    }
    return jsonArray(parts);
}

using IgnoredKeys = std::vector<CommandResult::IgnoredKey>;

std::string namesArray(IgnoredKeys const& keys) {
    std::vector<std::string> parts;
    parts.reserve(keys.size());
    for (auto const& key : keys) {
        parts.push_back(quotedText(key.name));
    }
    return jsonArray(parts);
}

// The mistyped keys with what was probably meant.
JsonMembers nearestOf(IgnoredKeys const& keys) {
    JsonMembers members;
    for (auto const& key : keys) {
        if (key.nearest) {
            members.emplace_back(key.name, quotedText(*key.nearest));
        }
    }
    return members;
}

// Keys with values that JSON and YAML both read.
JsonMembers membersOf(CommandResult const& result) {
    JsonMembers members = {{"Object", quotedText(result.object)},
                           {"Keys", keysJson(result)},
                           {"Verdict", quotedText(verdictOf(result))}};
    if (result.fault) {
        members.emplace_back("Reason", quotedText(*result.fault));
    }
    members.emplace_back("WorkDone", jsonTruth(result.isWorkDone));
    if (!result.ignoredKeys.empty()) {
        members.emplace_back("Ignored", namesArray(result.ignoredKeys));
    }
    if (auto const nearest = nearestOf(result.ignoredKeys); !nearest.empty()) {
        members.emplace_back("DidYouMean", jsonObject(nearest));
    }
    if (result.status) {
        members.emplace_back("Status", jsonStatus(*result.status));
    }
    members.emplace_back("Files", filesArray(result.files));
    members.emplace_back("Time", jsonTime(result.time));
    members.emplace_back("Seconds", fmt::format("{:.6f}", result.seconds));
    return members;
}

std::string fileHead(std::string_view commandFile, bool isHandled, bool isFaultless) {
    return fmt::format("Command: {}\nHandled: {}\nFaultless: {}\n", quotedText(commandFile),
                       isHandled, isFaultless);
}

std::vector<std::string_view> linesOf(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        auto const end = std::min(text.find('\n'), text.size() - 1);
        lines.push_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    return lines;
}

} // namespace

std::string resultText(CommandResult const& result) {
    auto text = fmt::format("{} {}: {}, {}", result.object, keysText(result),
                            verdictOf(result) + (result.fault ? ", " + *result.fault : ""),
                            result.isWorkDone ? "work done" : "no work done");
    if (!result.ignoredKeys.empty()) {
        text += ", ignored";
        for (auto const& key : result.ignoredKeys) {
            text += " " + key.name +
                    (key.nearest ? fmt::format(" (did you mean '{}'?)", *key.nearest) : "");
        }
    }
    if (result.status) {
        text += ", status " + statusText(*result.status);
    }
    if (!result.fault) { // which names the file
        for (auto const& file : result.files) {
            text += ", " + fileText(file);
        }
    }
    return fmt::format("{}, {:.3f} s", text, result.seconds);
}

std::string resultJson(CommandResult const& result) {
    return jsonObject(membersOf(result));
}

std::string keysJson(CommandResult const& result) {
    JsonMembers members;
    for (auto const& key : result.keys) {
        members.emplace_back(key.name, quotedText(key.value));
    }
    return jsonObject(members);
}

std::string resultFileText(std::string_view commandFile,
                           std::vector<CommandResult> const& results) {
    bool const areHandled = std::all_of(results.begin(), results.end(),
                                        [](auto const& result) { return result.isHandled; });
    bool const areFaultless = std::all_of(results.begin(), results.end(),
                                          [](auto const& result) { return result.isFaultless(); });
    auto text = fileHead(commandFile, areHandled, areFaultless) + "Results:\n";
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
    auto text = fileHead(commandFile, false, false) + "Problems:\n";
    for (auto const& problem : problems) {
        text += "  - " + quotedText(problem) + "\n";
    }
    return text;
}

// Each line has a key, if any, and a value that JSON reads as well.
std::string resultFileJson(std::string_view resultFile) {
    constexpr std::string_view item = "  - ";
    constexpr std::string_view member = "    ";
    JsonMembers head;
    std::vector<JsonMembers> results;
    std::vector<std::string> problems;
    for (auto const line : linesOf(resultFile)) {
        auto const text = line.substr(line.find_first_not_of(" -"));
        auto const colon = text.find(':');
        auto const key = text.substr(0, colon);
        if (line.starts_with(item) && text.starts_with('"')) {
            problems.emplace_back(text);
            continue;
        }
        if (text.ends_with(':')) {
            continue; // of the list that follows
        }
        if (line.starts_with(item)) {
            results.emplace_back();
        }
        auto& target = line.starts_with(item) || line.starts_with(member) ? results.back() : head;
        target.emplace_back(key, text.substr(colon + 2));
    }
    std::vector<std::string> objects;
    objects.reserve(results.size());
    for (auto const& result : results) {
        objects.push_back(jsonObject(result));
    }
    auto const& list = problems.empty() ? objects : problems;
    head.emplace_back(problems.empty() ? "Results" : "Problems", jsonArray(list));
    return jsonObject(head) + "\n";
}

} // namespace host
