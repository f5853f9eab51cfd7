// What tells a file whose lines were published from another one, also when that is called so
// tomorrow: its identity, and once that has changed, its lines.
#pragma once

#include "EdrMessage.h"
#include "base/Notification.h"
#include "input/LineReader.h"

#include <filesystem>
#include <optional>
#include <string>

namespace stream {

// "NAME INODE SIZE MODIFIED" for a regular file. What can't be read twice is another source each
// time.
std::string sourceName(std::filesystem::path const& file);

// "-" and pipes can't.
bool canBeReadAgain(std::filesystem::path const& file);

// Of the names of two sources.
enum class Likeness { none, sameName, sameInode };
Likeness likenessOf(std::string const& one, std::string const& other);

// Sums up the lines of a source from the first one on.
class LineSums {
public:
    void add(host::LineReader const& lines);
    SourceSums const& sums() const noexcept { return sumsM; }

private:
    SourceSums sumsM;
    bool isEmptyM = true;
};

// Over the lines of a file up to that number; nothing when it has fewer. Throws PublishingStopped,
// and a BAS::Status when the file can't be read.
std::optional<SourceSums> sumsOf(std::filesystem::path const& file, std::uint64_t lines,
                                 std::size_t longestLine, host::Notification const& stop);

} // namespace stream
