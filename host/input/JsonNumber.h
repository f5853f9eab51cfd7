// Numbers of JSON as texts: the library's parser only checks those that it converts.
#pragma once

#include <algorithm>
#include <string_view>

namespace host {

inline std::size_t countDigits(std::string_view text) noexcept {
    auto const end =
        std::find_if(text.begin(), text.end(), [](char c) { return c < '0' || c > '9'; });
    return static_cast<std::size_t>(end - text.begin());
}

// The length of the number that the text begins with; 0 when it begins with none.
inline std::size_t jsonNumberLength(std::string_view text) noexcept {
    std::size_t length = 0;
    auto const takeAnyOf = [&](std::string_view characters) {
        bool const isThere =
            length < text.size() && characters.find(text[length]) != std::string_view::npos;
        length += isThere ? 1 : 0;
        return isThere;
    };
    auto const takeDigits = [&] {
        auto const count = countDigits(text.substr(length));
        length += count;
        return count;
    };
    takeAnyOf("-");
    auto const first = text.substr(length, 1);
    auto const whole = takeDigits();
    if (whole == 0 || (whole > 1 && first == "0")) {
        return 0;
    }
    if (takeAnyOf(".") && takeDigits() == 0) {
        return 0;
    }
    if (takeAnyOf("eE")) {
        takeAnyOf("+-");
        if (takeDigits() == 0) {
            return 0;
        }
    }
    return length;
}

} // namespace host
