#include "text/EventReader.h"

#include "text/PlugInLines.h"

#include <charconv>

namespace reader {

namespace {

constexpr std::size_t pieceSize = std::size_t{1} << 18U;
constexpr std::size_t rulerSize = 70;
// What begins the key line of either text. What follows tells which.
constexpr std::string_view keyLineStart = "\nEvent type";
constexpr std::size_t longestOutside = std::size_t{64} << 20U;

bool isRuler(std::string_view line, char c) {
    return line.size() == rulerSize && line.find_first_not_of(c) == std::string_view::npos;
}

// The begin of the line that ends before a line end.
std::size_t lineBefore(std::string_view text, std::size_t lineEnd) {
    auto const end = lineEnd == 0 ? std::string_view::npos : text.rfind('\n', lineEnd - 1);
    return lineEnd == 0 || end == std::string_view::npos ? 0 : end + 1;
}

std::optional<std::uint64_t> numberOf(std::string_view line) {
    if (!line.starts_with(beginLabel)) {
        return std::nullopt;
    }
    std::uint64_t number = 0;
    auto const* const end = line.data() + line.size();
    auto const read = std::from_chars(line.data() + beginLabel.size(), end, number);
    return read.ec == std::errc() && read.ptr == end ? std::optional(number) : std::nullopt;
}

// Whether the text is the beginning of an event's beginning, cut before the end of its key line's
// label.
bool beginsLikeEvent(std::string_view text) {
    std::string_view line;
    Lines lines(text, 1);
    if (!lines.next(line)) {
        return false;
    }
    if (line.starts_with("Begin: ")) {
        auto const digits = line.substr(beginLabel.size());
        if (digits.find_first_not_of("0123456789") != std::string_view::npos) {
            return false;
        }
        return !lines.next(line) ||
               (line.size() <= rulerSize && line.find_first_not_of('=') == std::string_view::npos &&
                (!lines.next(line) || dumpKeyLabel.starts_with(line)) && !lines.next(line));
    }
    return beginLabel.starts_with(line) && !line.empty() && !lines.next(line);
}

} // namespace

EventReader::EventReader(InputFile& file, NoticeSink notice)
    : fileM(file), noticeM(std::move(notice)), bufferM(pieceSize) {
}

bool EventReader::next(EventText& event) {
    event = EventText();
    if (!presentM && !isAtEndM) {
        presentM = nextStart();
        if (!presentM) {
            requireEvent();
        }
        auto const outsideEnd = presentM ? presentM->begin : endM;
        if (outsideEnd > beginM) {
            event.isOutside = true;
            event.isLast = !presentM;
            hand(event, outsideEnd);
            return true;
        }
    }
    if (!presentM) {
        return false;
    }
    anyEventM = true;
    event.kind = presentM->kind;
    event.number = presentM->number;
    checkNumber(*presentM);
    presentM = nextStart();
    event.isLast = !presentM;
    hand(event, presentM ? presentM->begin : endM);
    return true;
}

// The first start after the present event's own, which is at beginM.
std::optional<EventReader::Start> EventReader::nextStart() {
    for (;;) {
        if (auto const start = findStart(searchedM)) {
            return start;
        }
        // A start may be half read.
        constexpr std::size_t longestStart = 256;
        searchedM = std::max(searchedM, endM > longestStart ? endM - longestStart : 0);
        searchedM = std::max(searchedM, beginM);
        if (!anyEventM && !presentM && endM - beginM > longestOutside) {
            requireEvent();
        }
        if (!readMore()) {
            return startThatIsCut();
        }
    }
}

bool EventReader::readMore() {
    if (isAtEndM) {
        return false;
    }
    if (beginM > 0 && endM + pieceSize > bufferM.size()) {
        std::memmove(bufferM.data(), bufferM.data() + beginM, endM - beginM);
        endM -= beginM;
        searchedM -= beginM;
        if (presentM) {
            presentM->begin -= beginM;
        }
        beginM = 0;
    }
    if (endM + pieceSize > bufferM.size()) {
        bufferM.resize(std::max(bufferM.size() * 2, endM + pieceSize));
    }
    auto const count = fileM.read(bufferM.data() + endM, pieceSize);
    endM += count;
    isAtEndM = count == 0;
    return !isAtEndM;
}

std::optional<EventReader::Start> EventReader::findStart(std::size_t from) const {
    std::string_view const text(bufferM.data(), endM);
    for (auto at = findText(text, keyLineStart, from); at != std::string_view::npos;
         at = findText(text, keyLineStart, at + 1)) {
        auto const start = startAround(at + 1);
        bool const isOwn = presentM && start && start->begin <= presentM->begin;
        if (start && !isOwn && start->begin >= beginM) {
            return start;
        }
    }
    return std::nullopt;
}

std::optional<EventReader::Start> EventReader::startAround(std::size_t keyLine) const {
    std::string_view const text(bufferM.data(), endM);
    auto const ruler = lineBefore(text, keyLine - 1);
    auto const rulerLine = text.substr(ruler, keyLine - 1 - ruler);
    if (text.substr(keyLine).starts_with(reportKeyLabel) && isRuler(rulerLine, '-')) {
        return Start{ruler, TextKind::report, 0};
    }
    if (text.substr(keyLine).starts_with(dumpKeyLabel) && isRuler(rulerLine, '=') && ruler > 0) {
        auto const begin = lineBefore(text, ruler - 1);
        if (auto const number = numberOf(text.substr(begin, ruler - 1 - begin))) {
            return Start{begin, TextKind::dump, *number};
        }
    }
    return std::nullopt;
}

// At the end of the file: a dump that was cut in the first lines of an event.
std::optional<EventReader::Start> EventReader::startThatIsCut() const {
    std::string_view const text(bufferM.data(), endM);
    constexpr int linesOfStart = 4;
    auto begin = lineBefore(text, endM);
    for (int lines = 0; lines < linesOfStart; ++lines) {
        auto const line = text.substr(begin, text.find('\n', begin) - begin);
        bool const isFirst = begin == beginM && !presentM && line.starts_with(beginLabel);
        bool const isAfterAnother = begin > beginM && (!presentM || begin > presentM->begin) &&
                                    text.substr(beginM, begin - beginM).ends_with("\n\n");
        if ((isFirst || isAfterAnother) && beginsLikeEvent(text.substr(begin))) {
            return Start{begin, TextKind::dump, numberOf(line).value_or(lastNumberM + 1)};
        }
        if (begin <= beginM) {
            break;
        }
        begin = lineBefore(text, begin - 1);
    }
    return std::nullopt;
}

void EventReader::hand(EventText& event, std::size_t end) {
    event.bytes = {bufferM.data() + beginM, end - beginM};
    event.line = lineM;
    if (event.kind == TextKind::report && !event.isOutside) {
        event.number = ++reportsM;
    }
    lineM += lineEndsIn(event.bytes);
    beginM = end;
    searchedM = std::max(searchedM, beginM);
}

void EventReader::checkNumber(Start const& start) {
    if (start.kind == TextKind::report) {
        return;
    }
    if (start.number != lastNumberM + 1) {
        noticeM(lineM, start.number == 1
                           ? std::string("a dump begins anew within the file")
                           : "event " + std::to_string(start.number) + " where event " +
                                 std::to_string(lastNumberM + 1) + " was expected");
    }
    lastNumberM = start.number;
}

// An empty file is a dump of no events.
void EventReader::requireEvent() const {
    if (!anyEventM && endM > beginM) {
        throw InputError(fileM.name() + ":1: no event begins in it: \"Begin: 1\", a line of 70 "
                                        "\"=\" and the event's key were expected, or a line of 70 "
                                        "\"-\" and the key");
    }
}

} // namespace reader
