#include "text/SentencePattern.h"

namespace reader {

bool matches(std::string_view pattern, std::string_view line, Captures& values) {
    constexpr std::string_view slot = "{}";
    auto at = pattern.find(slot);
    if (!line.starts_with(pattern.substr(0, at))) {
        return false;
    }
    line.remove_prefix(std::min(at, pattern.size()));
    for (auto& value : values) {
        if (at == std::string_view::npos) {
            return line.empty();
        }
        pattern.remove_prefix(at + slot.size());
        at = pattern.find(slot);
        auto const literal = pattern.substr(0, at);
        if (at == std::string_view::npos) {
            if (!line.ends_with(literal)) {
                return false;
            }
            value = line.substr(0, line.size() - literal.size());
            return true;
        }
        auto const end = line.find(literal);
        if (end == std::string_view::npos) {
            return false;
        }
        value = line.substr(0, end);
        line.remove_prefix(end + literal.size());
    }
    return false;
}

} // namespace reader
