// Splits a file of event reports or in-memory dumps into its events, in one pass. Memory holds the
// largest event, not the file. What stands outside of all events is handed out too, so that the
// pieces together are the file, byte for byte.
#pragma once

#include "text/InputFile.h"
#include "text/Lines.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace reader {

enum class TextKind { report, dump };

// Valid until the next one is read.
struct EventText {
    TextKind kind = TextKind::dump;
    LinedText text;
    LineNumber line = 1;
    std::uint64_t offset = 0; // in the file
    // "Begin: N" of a dump; in a report the how manieth.
    std::uint64_t number = 0;
    // Not of an event: what stands before the first one, or after the end of a report's.
    bool isOutside = false;
};

// Something about the order of events that a reader of the file should know.
using NoticeSink = std::function<void(LineNumber, std::string const&)>;

class EventReader {
public:
    // The file stays the caller's. Reads from where it stands.
    EventReader(InputFile& file, NoticeSink notice);

    // False at the end of the file. Throws an InputError when it can't be read, and when there is
    // text but no event.
    bool next(EventText& event);

private:
    struct Start {
        std::size_t begin = 0;
        std::size_t lineEnd = 0; // the first one that is not before it
        TextKind kind = TextKind::dump;
        std::uint64_t number = 0;
    };

    std::size_t beginOfLine(std::size_t line) const { return line > 0 ? endsM[line - 1] + 1 : 0; }
    std::optional<Start> findStart();
    std::optional<Start> startAround(std::size_t ruler) const;
    std::optional<Start> startThatIsCut() const;
    bool readMore();
    void dropWhatWasHandedOut();
    std::optional<Start> nextStart();
    void hand(EventText& event);
    void checkNumber(Start const& start);
    void requireEvent() const;

    InputFile& fileM;
    NoticeSink noticeM;
    std::vector<char> bufferM;      // begins with a line
    std::vector<std::size_t> endsM; // places of the line ends in it
    std::size_t beginM = 0;         // of what was not handed out yet
    std::size_t firstLineEndM = 0;  // the first one that was not handed out yet
    std::size_t endM = 0;
    std::size_t searchedM = 0; // no line before it is the ruler of a start
    LineNumber lineM = 1;
    std::uint64_t offsetM = 0; // of what was not handed out yet, in the file
    bool isAtEndM = false;
    std::optional<Start> presentM;
    bool anyEventM = false;
    std::uint64_t lastNumberM = 0;
    std::uint64_t reportsM = 0;
};

} // namespace reader
