// How many partitions a stream has. Each of them says so in its description on the servers, so that
// a host or publisher with another number is refused: it would look for keys in other partitions.
#pragma once

#include "Connection.h"

#include <cstdint>
#include <optional>
#include <string>

namespace stream {

std::string partitionDescription(std::uint64_t partition, std::uint64_t count);

// Nothing when the partition doesn't say it: an earlier version made it.
std::optional<std::uint64_t> partitionCountOf(jsStreamInfo const& partition);

// Throws a BAS::Status that names both numbers when the partition says another one than the
// registry.
void requirePartitionCount(host::StreamConfiguration const& stream, jsStreamInfo const& partition);

} // namespace stream
