// Gathers the lines of an event that fit nowhere.
#pragma once

#include "facts/EventFacts.h"

namespace reader {

class UnplacedLines {
public:
    // The text is the event's, without the line within which it was cut.
    UnplacedLines(std::string_view text, bool isCut, std::vector<Unplaced>& lines)
        : textM(text), isCutM(isCut), linesM(lines) {}

    // The line is a part of the text, and the reason outlives the facts. The last line of a text
    // that was cut is left out: it may be a heading whose ruler is missing.
    void add(LineNumber number, std::string_view line, char const* reason);

private:
    std::string_view textM;
    bool isCutM;
    std::vector<Unplaced>& linesM;
};

// Whether only the plug-in begins a line so.
bool isSectionLine(std::string_view line);

} // namespace reader
