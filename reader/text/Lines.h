// A text with its lines known: where they end is found out once, and everything that walks over
// lines or counts them goes from there.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>
#include <vector>

namespace reader {

// A line of a file, from 1.
using LineNumber = std::uint64_t;

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

// Appends the places of the '\n' in a text, each counted from so many bytes before the text.
void appendLineEnds(std::string_view text, std::size_t before, std::vector<std::size_t>& ends);

// A place in a text, and how many line ends are before it.
struct Place {
    std::size_t at = 0;
    std::size_t line = 0;
};

// A text and the places of its line ends, both somebody else's. A part of it is as cheap as a part
// of a string_view.
class LinedText {
public:
    LinedText() = default;
    // The line ends are counted from the origin, which the text does not begin before.
    LinedText(std::string_view bytes, std::span<std::size_t const> ends, char const* origin)
        : bytesM(bytes), endsM(ends), originM(origin) {}

    std::string_view bytes() const noexcept { return bytesM; }
    std::size_t size() const noexcept { return bytesM.size(); }
    std::size_t lineEnds() const noexcept { return endsM.size(); }
    // Where a line ends; the end of the text when it has no such line end.
    std::size_t endOf(std::size_t line) const {
        return line < endsM.size() ? endsM[line] - before() : bytesM.size();
    }
    Place end() const noexcept { return {bytesM.size(), endsM.size()}; }
    // Of something that was found in the text.
    Place placeOf(std::size_t at) const {
        auto const next = std::lower_bound(endsM.begin(), endsM.end(), at + before());
        return {at, static_cast<std::size_t>(next - endsM.begin())};
    }
    // The begin of the line after that of the place.
    Place nextLine(Place place) const {
        return place.line < endsM.size() ? Place{endOf(place.line) + 1, place.line + 1} : end();
    }
    LinedText part(Place begin, Place end) const {
        return {bytesM.substr(begin.at, end.at - begin.at),
                endsM.subspan(begin.line, end.line - begin.line), originM};
    }
    std::string_view restOfLine(Place place) const {
        return bytesM.substr(place.at, endOf(place.line) - place.at);
    }

private:
    std::size_t before() const { return static_cast<std::size_t>(bytesM.data() - originM); }

    std::string_view bytesM;
    std::span<std::size_t const> endsM;
    char const* originM = nullptr;
};

// Finds the line ends of a text, which stays the caller's.
class LineIndex {
public:
    explicit LineIndex(std::string_view text) : textM(text) { appendLineEnds(text, 0, endsM); }

    operator LinedText() const { return {textM, endsM, textM.data()}; }

private:
    std::string_view textM;
    std::vector<std::size_t> endsM;
};

class Lines {
public:
    // The number is that of the text's first line.
    Lines(LinedText const& text, LineNumber number) : textM(text), numberM(number) {}

    // The next line, without its end; false when there is none.
    bool next(std::string_view& line) {
        if (nextM.at >= textM.size()) {
            return false;
        }
        beginM = nextM;
        line = textM.restOfLine(beginM);
        nextM = textM.nextLine(beginM);
        return true;
    }

    // Goes on with the line that begins there.
    void goOn(Place begin) { nextM = begin; }

    // Of the line that was given last.
    LineNumber number() const noexcept { return numberM + beginM.line; }
    Place begin() const noexcept { return beginM; }
    // The begin of the next one.
    Place end() const noexcept { return nextM; }

private:
    LinedText textM;
    LineNumber numberM;
    Place beginM;
    Place nextM;
};

} // namespace reader
