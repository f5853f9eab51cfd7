#include "facts/EventEnd.h"

#include "text/PlugInLines.h"

namespace reader {

namespace {

// How many line ends the text ends with.
std::size_t lineEndsAtEnd(std::string_view text) {
    auto const last = text.find_last_not_of('\n');
    return last == std::string_view::npos ? text.size() : text.size() - last - 1;
}

std::string_view lastLine(std::string_view text) {
    auto const end = text.find_last_not_of('\n') + 1;
    auto const begin = text.substr(0, end).rfind('\n');
    return text.substr(0, end).substr(begin == std::string_view::npos ? 0 : begin + 1);
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
bool isSharingCut(std::string_view text, std::string_view sharing) {
    constexpr std::size_t endOfEvent = 2;
    auto const last = lastLine(text);
    auto const lineEnds = lineEndsAtEnd(text);
    if (goesOnAfter(last) || lineEnds < endOfEvent) {
        return true;
    }
    bool const balancesFollow = last.starts_with(ownerRowLabels.back()) &&
                                findText(text, balancesHeading) != std::string_view::npos;
    auto const lastItem = sharing.rfind(sharedModelLabel);
    auto const afterItems = sharing.substr(lastItem == std::string_view::npos ? 0 : lastItem);
    bool const isOwnText = findText(afterItems, " asked\n") != std::string_view::npos;
    bool const isPlugInLine = sharing.find_first_not_of('\n') == std::string_view::npos ||
                              last.starts_with(ownerRowLabels.back()) ||
                              last.starts_with(sharedModelLabel);
    return balancesFollow || ((isOwnText || isPlugInLine) && lineEnds <= endOfEvent);
}

bool isDumpCut(std::string_view text) {
    auto const key = findText(text, dumpKeyLabel);
    auto const keyEnd = text.find('\n', key);
    if (key == std::string_view::npos || keyEnd == std::string_view::npos) {
        return true;
    }
    constexpr std::string_view endAfterKey = "\n\n\n";
    auto const sharing = findText(text, sharingHeading, keyEnd);
    if (sharing == std::string_view::npos) {
        return text.substr(keyEnd) != endAfterKey;
    }
    return isSharingCut(text, text.substr(sharing + sharingHeading.size()));
}

} // namespace

bool isCut(EventText const& event) {
    return event.kind == TextKind::report ? isReportCut(event.bytes) : isDumpCut(event.bytes);
}

} // namespace reader
