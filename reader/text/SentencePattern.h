// Matches a line with a pattern such as "  Account {}: status {}": literal pieces, and between them
// values of any length. A value ends where the next literal piece begins for the first time; the
// last one goes to the line's end.
#pragma once

#include <array>
#include <string_view>

namespace reader {

using Captures = std::array<std::string_view, 5>;

class SentencePattern {
public:
    // The text outlives the pattern, and has no more values than the captures.
    constexpr SentencePattern(char const* text) {
        constexpr std::string_view slot = "{}";
        std::string_view rest(text);
        for (auto at = rest.find(slot); at != std::string_view::npos; at = rest.find(slot)) {
            piecesM[countM++] = rest.substr(0, at);
            rest.remove_prefix(at + slot.size());
        }
        piecesM[countM++] = rest;
    }

    bool matches(std::string_view line, Captures& values) const {
        return line.starts_with(piecesM[0]) && takeValues(line.substr(piecesM[0].size()), values);
    }

private:
    bool takeValues(std::string_view line, Captures& values) const;

    std::array<std::string_view, std::tuple_size_v<Captures> + 1> piecesM;
    std::size_t countM = 0;
};

} // namespace reader
