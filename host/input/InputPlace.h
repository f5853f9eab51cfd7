// Where a pipeline stands in its input: after everything before that place.
#pragma once

#include <cstdint>

namespace host {

struct InputPlace {
    std::uint64_t partition = 0; // of a stream; a file is a single partition
    std::uint64_t message = 0; // of the partition: its sequence number; a file is a single message
    std::uint64_t offset = 0;  // in the file in bytes, after decompression; in a message in lines

    bool operator==(InputPlace const&) const = default;
};

} // namespace host
