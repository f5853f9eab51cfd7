// Remembers how far a host has come in the partitions of a stream. The file has one record for each
// partition of the stream, at its own place and within one sector of a disk, so that a record is
// there as a whole or not at all, also when the process is killed.
#pragma once

#include "base/FileDescriptor.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stream {

struct StreamPlace {
    std::uint64_t sequence = 1;      // of the message that comes next
    std::uint64_t lines = 0;         // of it that are processed
    std::uint64_t rejectedBytes = 0; // that the partition's reject file holds
    std::int64_t created = 0;        // the stream, in nanoseconds since 1970

    bool operator==(StreamPlace const&) const = default;
};

// The last message of which lines were read; 0 when there is none.
inline std::uint64_t lastRead(StreamPlace const& place) {
    return place.lines > 0 ? place.sequence : place.sequence - 1;
}

// How many messages wait from the place of the next one on, in a stream that has those from first
// to last; earlier ones are gone.
inline std::uint64_t lagOf(std::uint64_t next, std::uint64_t first, std::uint64_t last) {
    auto const begin = std::max(next, first);
    return last < begin ? 0 : last - begin + 1;
}

std::string placeText(StreamPlace const& place);
// Nothing when it can't be understood.
std::optional<StreamPlace> parsePlace(std::string_view text);

class StreamPlaces {
public:
    // Throws a BAS::Status when the file can't be opened, or when another host has it.
    explicit StreamPlaces(std::filesystem::path file);

    // Nothing when there is none, or none that can be understood.
    std::optional<StreamPlace> read(std::uint64_t partition) const;
    void set(std::uint64_t partition, StreamPlace const& place);
    // Writes what was set since the last call, in one write. Throws a BAS::Status when that isn't
    // possible.
    void write();

private:
    std::filesystem::path fileM;
    host::FileDescriptor descriptorM;
    std::string recordsM; // of all partitions up to the highest known one
    std::size_t changedBeginM = 0;
    std::size_t changedEndM = 0;
};

} // namespace stream
