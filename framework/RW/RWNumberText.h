// How the framework converts a text to a whole number: the whole text is one decimal number with an
// optional sign.
#pragma once

#include <charconv>
#include <concepts>
#include <string_view>
#include <system_error>

// Returns false and leaves the number untouched for any other text and for a value out of range.
template <std::integral Number>
bool rwTextToNumber(std::string_view text, Number& number) noexcept {
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) {
            return false;
        }
    } else if (std::unsigned_integral<Number> && text.starts_with('-')) {
        // Negative numbers are out of range, but "-0" is valid.
        text.remove_prefix(1);
        if (text.empty() || text.find_first_not_of('0') != std::string_view::npos) {
            return false;
        }
    }
    Number value{};
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size()) {
        return false;
    }
    number = value;
    return true;
}
