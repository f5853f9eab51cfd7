#include "base/JsonText.h"

#include "base/EscapedText.h"
#include "base/LogFile.h"
#include "base/MessageCatalogue.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

namespace host {

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
    return jsonObject({{"Message", quotedText(status.messageName().view())},
                       {"Level", quotedText(levelName(status.severity()))},
                       {"Text", quotedText(messageText(status))}});
}

std::string jsonTime(std::chrono::system_clock::time_point time) {
    auto const milliseconds =
        std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch()).count() % 1000;
    return fmt::format("\"{:%Y-%m-%dT%H:%M:%S}.{:03}Z\"",
                       fmt::gmtime(std::chrono::system_clock::to_time_t(time)), milliseconds);
}

} // namespace host
