#include "text/PlugInLines.h"

namespace reader {

Place findHeading(LinedText const& text, Place from, std::span<Heading const> headings) {
    for (auto line = from.line; line + 1 < text.lineEnds(); ++line) {
        Place const place{text.endOf(line), line};
        bool const isBeforeEmptyLine = text.endOf(line + 1) == place.at + 1;
        if (isBeforeEmptyLine &&
            std::any_of(headings.begin(), headings.end(), [&](Heading const& heading) {
                return isHeadingAt(text, place, heading);
            })) {
            return place;
        }
    }
    return text.end();
}

} // namespace reader
