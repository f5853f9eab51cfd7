// Where publishing goes on: compares the files that are given with the last messages of the
// partitions. Nothing is sent twice, and nothing passed over, on a guess.
#pragma once

#include "BAS/LogSink.h"
#include "EdrMessage.h"
#include "SourceFile.h"
#include "input/StreamLibrary.h"

#include <optional>
#include <string>
#include <vector>

namespace stream {

// Up to there a partition has everything: of files before that one all lines.
struct ResumePoint {
    std::size_t file = 0;
    std::uint64_t line = 0;
    bool isKnown = false; // from the last message, else as --from says
};

class Resumption {
public:
    // Everything given must outlive the object. The stream's name is for messages. Throws
    // std::invalid_argument when a file is given twice.
    Resumption(std::string const& stream, host::StreamSource const& source, std::size_t longestLine,
               host::Notification const& stop, BAS::LogSink& log);

    // Of the files, in the stream.
    std::vector<std::string> const& names() const noexcept { return namesM; }

    // For each partition the point, from the place of its last message. The log gets what was
    // found of files that have changed. Throws PublishingStopped, and a BAS::Status when it can't
    // be known whether the file given is the one that was published, unless --from says so.
    std::vector<ResumePoint> find(std::vector<std::optional<SourcePlace>> const& lasts);

    // Where nothing is known.
    ResumePoint atFrom() const;

    // What a source that can be read only once must have at its line, if it was published before.
    std::optional<SourcePlace> const& expected() const noexcept { return expectedM; }
    // That the one source isn't what was published before under its name.
    BAS::Status isAnother(SourcePlace const& published) const;

private:
    std::optional<std::size_t> fileOf(SourcePlace const& published);
    std::optional<std::size_t> namedFile(SourcePlace const& published);
    bool isContinued(SourcePlace const& published, std::size_t file, Likeness likeness) const;
    std::optional<SourceSums> sumsOf(std::size_t file, std::uint64_t lines) const;
    void refuse(std::string const& reason) const;

    std::string const& streamM;
    host::StreamSource const& sourceM;
    std::size_t longestLineM;
    host::Notification const& stopM;
    BAS::LogSink& logM;
    std::vector<std::string> namesM;
    std::optional<SourcePlace> expectedM;
};

} // namespace stream
