// What standard output is: a terminal with a width, and perhaps colours, or a file or pipe, which
// gets neither.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace reader {

struct Terminal {
    bool isTerminal = false;
    bool hasColours = false;
    std::size_t width = 0; // 0: without limit

    // Asks standard output and the environment (NO_COLOR, TERM, COLUMNS).
    static Terminal ofOutput();

    // The text within the escape sequence of a colour such as "31", where there are colours.
    std::string coloured(std::string_view text, std::string_view colour) const;
};

// Cut to so many characters, with "…" at the end, or filled up with blanks.
std::string fitted(std::string const& text, std::size_t width);

} // namespace reader
