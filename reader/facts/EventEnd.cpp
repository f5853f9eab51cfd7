#include "facts/EventEnd.h"

#include "text/PlugInLines.h"

namespace reader {

namespace {

// How many line ends the text ends with.
std::size_t lineEndsAtEnd(std::string_view text) {
    auto const last = text.find_last_not_of('\n');
    return last == std::string_view::npos ? text.size() : text.size() - last - 1;
}

// Before the line ends at the end.
std::string_view lastLine(LinedText const& text, std::size_t lineEndsAfterIt) {
    auto const lineEnds = text.lineEnds() - lineEndsAfterIt;
    auto const begin = lineEnds == 0 ? 0 : text.endOf(lineEnds - 1) + 1;
    return text.bytes().substr(begin, text.size() - lineEndsAfterIt - begin);
}

bool isReportCut(std::string_view text) {
    auto const ruler = text.rfind(reportRuler);
    auto const key = text.find(reportKeyLabel);
    return ruler == std::string_view::npos || ruler < key || text[ruler - 1] != '\n';
}

// After these lines others follow in any case.
bool goesOnAfter(std::string_view line) {
    if (line.starts_with(sharedObjectLabel) || line.starts_with(ownerHeading)) {
        return true;
    }
    for (std::size_t i = 0; i + 1 < ownerRowLabels.size(); ++i) {
        if (line.starts_with(ownerRowLabels[i])) {
            return true;
        }
    }
    return false;
}

// The sharing section: the line ends of its last line, then the two of the event. A module of
// others may leave the first one out.
bool isSharingCut(LinedText const& text, std::string_view sharing) {
    constexpr std::size_t endOfEvent = 2;
    auto const lineEnds = lineEndsAtEnd(text.bytes());
    auto const last = lastLine(text, lineEnds);
    if (goesOnAfter(last) || lineEnds < endOfEvent) {
        return true;
    }
    if (last.starts_with(ownerRowLabels.back())) {
        bool const balancesFollow = findHeading(text, {}, balancesHeading).at != text.size();
        return balancesFollow || lineEnds <= endOfEvent;
    }
    if (lineEnds > endOfEvent) {
        return false;
    }
    auto const lastItem = sharing.rfind(sharedModelLabel);
    auto const afterItems = sharing.substr(lastItem == std::string_view::npos ? 0 : lastItem);
    return findText(afterItems, " asked\n") != std::string_view::npos ||
           sharing.find_first_not_of('\n') == std::string_view::npos ||
           last.starts_with(sharedModelLabel);
}

bool isDumpCut(LinedText const& text) {
    auto const key = findText(text.bytes(), dumpKeyLabel);
    auto const keyLine = text.placeOf(std::min(key, text.size())).line;
    if (key == std::string_view::npos || keyLine >= text.lineEnds()) {
        return true;
    }
    Place const keyEnd{text.endOf(keyLine), keyLine};
    constexpr std::string_view endAfterKey = "\n\n\n";
    auto const sharing = findHeading(text, keyEnd, sharingHeading);
    if (sharing.at == text.size()) {
        return text.bytes().substr(keyEnd.at) != endAfterKey;
    }
    return isSharingCut(text, text.bytes().substr(sharingHeading.after(sharing).at));
}

} // namespace

bool isCut(TextKind kind, LinedText const& text) {
    return kind == TextKind::report ? isReportCut(text.bytes()) : isDumpCut(text);
}

} // namespace reader
