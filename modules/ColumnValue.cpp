#include "ColumnValue.h"

#include "RW/RWNumberText.h"

#include <fmt/format.h>

namespace MOD {

namespace {

constexpr char const* expectedTime = "a time such as 2026-01-31T00:00:00Z";

template <class Value>
char const* take(std::optional<Value> const& parsed, Value& value, char const* expected) {
    if (!parsed) {
        return expected;
    }
    value = *parsed;
    return nullptr;
}

} // namespace

char const* parseValue(std::string_view text, std::uint64_t& value, TextIntake& /*texts*/) {
    return rwTextToNumber(text, value) ? nullptr : "a whole number from 0 up";
}

char const* parseValue(std::string_view text, std::int64_t& value, TextIntake& /*texts*/) {
    return rwTextToNumber(text, value) ? nullptr : "a whole number";
}

char const* parseValue(std::string_view text, Decimal& value, TextIntake& /*texts*/) {
    return take(Decimal::fromText(text), value, "a decimal number of at most 18 digits");
}

char const* parseValue(std::string_view text, UtcTime& value, TextIntake& /*texts*/) {
    return take(UtcTime::fromText(text), value, expectedTime);
}

char const* parseValue(std::string_view text, EndTime& value, TextIntake& texts) {
    UtcTime time;
    auto const* const expected = parseValue(text, time, texts);
    value = EndTime(time);
    return expected;
}

char const* parseValue(std::string_view text, Text& value, TextIntake& texts) {
    value = texts.intern(text);
    return nullptr;
}

std::string shownValue(std::uint64_t value, TextPool const& /*texts*/) {
    return std::to_string(value);
}

std::string shownValue(std::int64_t value, TextPool const& /*texts*/) {
    return std::to_string(value);
}

std::string shownValue(Decimal const& value, TextPool const& /*texts*/) {
    return value.text();
}

std::string shownValue(UtcTime value, TextPool const& /*texts*/) {
    return value.text();
}

std::string shownValue(EndTime value, TextPool const& /*texts*/) {
    return value.text();
}

std::string shownValue(Text value, TextPool const& texts) {
    return shownText(texts[value]);
}

std::string shownText(std::string_view text) {
    std::string shown;
    for (char const c : text) {
        auto const code = static_cast<unsigned char>(c);
        if (code < 0x20 || code == 0x7f) {
            shown += fmt::format("\\x{:02x}", code);
        } else {
            shown += c;
        }
    }
    return shown;
}

} // namespace MOD
