#include "text/EventReader.h"

#include "text/PlugInLines.h"

#include <charconv>

namespace reader {

namespace {

constexpr std::size_t pieceSize = std::size_t{1} << 18U;
constexpr std::size_t rulerSize = 70;
constexpr std::size_t longestKeyLabel = std::max(dumpKeyLabel.size(), reportKeyLabel.size());
constexpr std::size_t longestOutside = std::size_t{64} << 20U;

bool isRuler(std::string_view line, char c) {
    return line.find_first_not_of(c) == std::string_view::npos;
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
    LineIndex const index(text);
    Lines lines(index, 1);
    if (!lines.next(line)) {
        return false;
    }
    if (line.starts_with(beginLabel)) {
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

// Whether the text is the beginning of a report's event, cut as well.
bool beginsLikeReport(std::string_view text) {
    auto const keyLine = text.substr(std::min(text.size(), rulerSize + 1));
    return !text.empty() && reportRuler.starts_with(text.substr(0, rulerSize)) &&
           (text.size() <= rulerSize || text[rulerSize] == '\n') &&
           reportKeyLabel.starts_with(keyLine);
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
            hand(event);
            return true;
        }
    }
    if (!presentM) {
        return false;
    }
    anyEventM = true;
    event.kind = presentM->kind;
    event.number = presentM->kind == TextKind::report ? ++reportsM : presentM->number;
    checkNumber(*presentM);
    presentM = nextStart();
    hand(event);
    return true;
}

// The first start after the present event's own, which is at beginM.
std::optional<EventReader::Start> EventReader::nextStart() {
    for (;;) {
        if (auto const start = findStart()) {
            return start;
        }
        if (!anyEventM && !presentM && endM - beginM > longestOutside) {
            requireEvent();
        }
        if (!readMore()) {
            // A key line that is as short as its label is known as one at the end only.
            auto const start = findStart();
            return start ? start : startThatIsCut();
        }
    }
}

bool EventReader::readMore() {
    if (isAtEndM) {
        return false;
    }
    if (beginM > 0 && endM + pieceSize > bufferM.size()) {
        dropWhatWasHandedOut();
    }
    if (endM + pieceSize > bufferM.size()) {
        bufferM.resize(std::max(bufferM.size() * 2, endM + pieceSize));
    }
    auto const count = fileM.read(bufferM.data() + endM, pieceSize);
    appendLineEnds({bufferM.data() + endM, count}, endM, endsM);
    endM += count;
    isAtEndM = count == 0;
    return !isAtEndM;
}

void EventReader::dropWhatWasHandedOut() {
    std::memmove(bufferM.data(), bufferM.data() + beginM, endM - beginM);
    endsM.erase(endsM.begin(), endsM.begin() + static_cast<std::ptrdiff_t>(firstLineEndM));
    for (auto& end : endsM) {
        end -= beginM;
    }
    endM -= beginM;
    searchedM -= firstLineEndM;
    if (presentM) {
        presentM->begin -= beginM;
        presentM->lineEnd -= firstLineEndM;
    }
    beginM = 0;
    firstLineEndM = 0;
}

// The ruler above the key line shows a start: few other lines are as long.
std::optional<EventReader::Start> EventReader::findStart() {
    auto begin = beginOfLine(searchedM);
    for (; searchedM < endsM.size(); begin = endsM[searchedM++] + 1) {
        if (endsM[searchedM] - begin != rulerSize) {
            continue;
        }
        bool const isKeyLineThere = endM - endsM[searchedM] > longestKeyLabel;
        if (!isKeyLineThere && !isAtEndM) {
            return std::nullopt;
        }
        if (auto const start = startAround(searchedM)) {
            ++searchedM;
            return start;
        }
    }
    return std::nullopt;
}

std::optional<EventReader::Start> EventReader::startAround(std::size_t ruler) const {
    std::string_view const text(bufferM.data(), endM);
    auto const begin = beginOfLine(ruler);
    auto const line = text.substr(begin, rulerSize);
    auto const keyLine = text.substr(endsM[ruler] + 1);
    if (keyLine.starts_with(reportKeyLabel) && isRuler(line, '-')) {
        return Start{begin, ruler, TextKind::report, 0};
    }
    if (ruler > firstLineEndM && keyLine.starts_with(dumpKeyLabel) && isRuler(line, '=')) {
        auto const beginLine = beginOfLine(ruler - 1);
        if (auto const number = numberOf(text.substr(beginLine, begin - 1 - beginLine))) {
            return Start{beginLine, ruler - 1, TextKind::dump, *number};
        }
    }
    return std::nullopt;
}

// At the end of the file: a dump or report that was cut in the first lines of an event.
std::optional<EventReader::Start> EventReader::startThatIsCut() const {
    std::string_view const text(bufferM.data(), endM);
    constexpr int linesOfStart = 4;
    auto begin = lineBefore(text, endM);
    for (int lines = 0; lines < linesOfStart; ++lines) {
        auto const line = text.substr(begin, text.find('\n', begin) - begin);
        bool const isFirst = begin == beginM && !presentM && line.starts_with(beginLabel);
        auto const before = text.substr(beginM, begin - beginM);
        bool const isAfterAnother =
            begin > beginM && (!presentM || begin > presentM->begin) && before.ends_with("\n\n");
        auto const lineEnd = static_cast<std::size_t>(
            std::lower_bound(endsM.begin(), endsM.end(), begin) - endsM.begin());
        if ((isFirst || isAfterAnother) && beginsLikeEvent(text.substr(begin))) {
            return Start{begin, lineEnd, TextKind::dump, numberOf(line).value_or(lastNumberM + 1)};
        }
        bool const isAfterReport = presentM && presentM->kind == TextKind::report &&
                                   begin > presentM->begin + rulerSize + 1 &&
                                   before.substr(0, before.size() - 1).ends_with(reportRuler);
        if (isAfterReport && beginsLikeReport(text.substr(begin))) {
            return Start{begin, lineEnd, TextKind::report, 0};
        }
        if (begin <= beginM) {
            break;
        }
        begin = lineBefore(text, begin - 1);
    }
    return std::nullopt;
}

// Everything up to what comes next.
void EventReader::hand(EventText& event) {
    auto const end = presentM ? presentM->begin : endM;
    auto const endOfLines = presentM ? presentM->lineEnd : endsM.size();
    event.text = {{bufferM.data() + beginM, end - beginM},
                  {endsM.data() + firstLineEndM, endOfLines - firstLineEndM},
                  bufferM.data()};
    event.line = lineM;
    event.offset = offsetM;
    offsetM += event.text.size();
    lineM += event.text.lineEnds();
    beginM = end;
    firstLineEndM = endOfLines;
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
        auto const firstEnd = endsM.empty() ? beginM : endsM.front();
        bool const hasOtherLineEnds = firstEnd > beginM && bufferM[firstEnd - 1] == '\r';
        throw InputError(fileM.name() + ":1: no event begins in it: " +
                         (hasOtherLineEnds
                              ? "its lines end with CR LF, as after a transfer as text; the "
                                "plug-in ends them with LF alone"
                              : "\"Begin: 1\", a line of 70 \"=\" and the event's key were "
                                "expected, or a line of 70 \"-\" and the key"));
    }
}

} // namespace reader
