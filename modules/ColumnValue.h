// The values that a column of the reference data can have, and how to parse, compare and show them.
#pragma once

#include "Decimal.h"
#include "TextPool.h"
#include "UtcTime.h"

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace MOD {

// A member of a row. A value is mandatory, except that NULL means nothing for a std::optional and
// open for an EndTime.
template <class Row>
using ColumnMember =
    std::variant<std::uint64_t Row::*, std::int64_t Row::*, Decimal Row::*, UtcTime Row::*,
                 EndTime Row::*, Text Row::*, std::optional<std::uint64_t> Row::*,
                 std::optional<Decimal> Row::*, std::optional<Text> Row::*>;

// Parses a text, which is not empty. Returns null, or what was expected instead.
char const* parseValue(std::string_view text, std::uint64_t& value, TextIntake& texts);
char const* parseValue(std::string_view text, std::int64_t& value, TextIntake& texts);
char const* parseValue(std::string_view text, Decimal& value, TextIntake& texts);
char const* parseValue(std::string_view text, UtcTime& value, TextIntake& texts);
char const* parseValue(std::string_view text, EndTime& value, TextIntake& texts);
char const* parseValue(std::string_view text, Text& value, TextIntake& texts);

template <class Value>
char const* parseValue(std::string_view text, std::optional<Value>& value, TextIntake& texts) {
    return parseValue(text, value.emplace(), texts);
}
// Whether a member keeps its default when its column is NULL.
template <class Value>
constexpr bool takesNull = false;
template <>
inline constexpr bool takesNull<EndTime> = true;
template <class Value>
constexpr bool takesNull<std::optional<Value>> = true;

template <class Value>
std::strong_ordering compareValues(Value const& a, Value const& b, TextPool const& /*texts*/) {
    return a <=> b;
}
// Values are equal only if they are shown alike.
inline std::strong_ordering compareValues(Decimal const& a, Decimal const& b,
                                          TextPool const& /*texts*/) {
    auto const order = a <=> b;
    return std::is_eq(order) ? a.scale() <=> b.scale() : order;
}
inline std::strong_ordering compareValues(Text a, Text b, TextPool const& texts) {
    return a.place == b.place ? std::strong_ordering::equal : texts[a] <=> texts[b];
}
template <class Value>
std::strong_ordering compareValues(std::optional<Value> const& a, std::optional<Value> const& b,
                                   TextPool const& texts) {
    return a && b ? compareValues(*a, *b, texts) : a.has_value() <=> b.has_value();
}

// A value for people. Control characters of a text are shown as \xNN, so that a text can't break a
// layout or forge a line.
std::string shownValue(std::uint64_t value, TextPool const& texts);
std::string shownValue(std::int64_t value, TextPool const& texts);
std::string shownValue(Decimal const& value, TextPool const& texts);
std::string shownValue(UtcTime value, TextPool const& texts);
std::string shownValue(EndTime value, TextPool const& texts);
std::string shownValue(Text value, TextPool const& texts);

// The text of nothing is empty.
template <class Value>
std::string shownValue(std::optional<Value> const& value, TextPool const& texts) {
    return value ? shownValue(*value, texts) : std::string();
}

// The text itself, with its control characters shown as \xNN.
std::string shownText(std::string_view text);

} // namespace MOD
