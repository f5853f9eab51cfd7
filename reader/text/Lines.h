// Walks over the lines of a text and counts them.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace reader {

// A line of a file, from 1.
using LineNumber = std::uint64_t;

inline LineNumber lineEndsIn(std::string_view text) {
    return static_cast<LineNumber>(std::count(text.begin(), text.end(), '\n'));
}

// Where the sought text begins in the text at or after a place; npos when nowhere.
inline std::size_t findText(std::string_view text, std::string_view sought, std::size_t from = 0) {
    if (from >= text.size()) {
        return std::string_view::npos;
    }
    auto const* const found =
        ::memmem(text.data() + from, text.size() - from, sought.data(), sought.size());
    return found == nullptr
               ? std::string_view::npos
               : static_cast<std::size_t>(static_cast<char const*>(found) - text.data());
}

inline std::size_t indentOf(std::string_view line) {
    return std::min(line.find_first_not_of(' '), line.size());
}

class Lines {
public:
    // The number is that of the text's first line.
    Lines(std::string_view text, LineNumber number) : textM(text), numberM(number) {}

    // The next line, without its end; false when there is none.
    bool next(std::string_view& line) {
        if (nextM >= textM.size()) {
            return false;
        }
        beginM = nextM;
        numberM += beginM > 0 ? 1 : 0;
        auto const* const at = textM.data() + beginM;
        auto const* const end =
            static_cast<char const*>(std::memchr(at, '\n', textM.size() - beginM));
        auto const size =
            end == nullptr ? textM.size() - beginM : static_cast<std::size_t>(end - at);
        nextM = beginM + size + 1;
        line = {at, size};
        return true;
    }

    // Goes on at a place further on, so many lines after the begin of the present line.
    void skipTo(std::size_t end, LineNumber lines) {
        nextM = end;
        numberM += lines - 1;
    }

    // Of the line that was given last.
    LineNumber number() const noexcept { return numberM; }
    std::size_t begin() const noexcept { return beginM; }
    // Behind its end.
    std::size_t end() const noexcept { return std::min(nextM, textM.size()); }

private:
    std::string_view textM;
    LineNumber numberM;
    std::size_t beginM = 0;
    std::size_t nextM = 0;
};

} // namespace reader
