#include "base/JsonText.h"

#include "base/EscapedText.h"
#include "base/LogFile.h"
#include "base/MessageCatalogue.h"
#include "base/TimeText.h"

#include <fmt/format.h>

namespace host {

namespace {

JsonMembers membersOf(BAS::Status const& status) {
    return {{"Message", quotedText(status.messageName().view())},
            {"Level", quotedText(levelName(status.severity()))},
            {"Text", quotedText(messageText(status))}};
}

} // namespace

std::string jsonObject(JsonMembers const& members) {
    std::vector<std::string> parts;
    parts.reserve(members.size());
    for (auto const& [key, value] : members) {
        parts.push_back(quotedText(key) + ": " + value);
    }
    return fmt::format("{{{}}}", fmt::join(parts, ", "));
}

std::string jsonArray(std::vector<std::string> const& elements) {
    return fmt::format("[{}]", fmt::join(elements, ", "));
}

std::string jsonTruth(bool value) {
    return value ? "true" : "false";
}

std::string jsonStatus(BAS::Status const& status) {
    return jsonObject(membersOf(status));
}

std::string jsonStatusOfObject(BAS::Status const& status) {
    auto members = membersOf(status);
    members.insert(members.begin(), {"Object", quotedText(status.objectName().view())});
    return jsonObject(members);
}

std::string jsonTime(std::chrono::system_clock::time_point time) {
    return quotedText(timeText(time));
}

} // namespace host
