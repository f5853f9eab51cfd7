#include "StreamShape.h"

#include <fmt/format.h>

#include <charconv>

namespace stream {

namespace {

constexpr char const* description = "partition {} of {}";
constexpr std::string_view beforeCount = " of ";

} // namespace

std::string partitionDescription(std::uint64_t partition, std::uint64_t count) {
    return fmt::format(fmt::runtime(description), partition, count);
}

std::optional<std::uint64_t> partitionCountOf(jsStreamInfo const& partition) {
    char const* const found = partition.Config->Description;
    std::string_view const text = found == nullptr ? "" : found;
    auto const begin = text.rfind(beforeCount);
    if (begin == std::string_view::npos) {
        return std::nullopt;
    }
    auto const digits = text.substr(begin + beforeCount.size());
    std::uint64_t count = 0;
    auto const [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), count);
    bool const isNumber = error == std::errc() && end == digits.data() + digits.size();
    return isNumber ? std::optional(count) : std::nullopt;
}

void requirePartitionCount(host::StreamConfiguration const& stream, jsStreamInfo const& partition) {
    auto const count = partitionCountOf(partition);
    if (count && *count != stream.partitionCount) {
        throw failure(stream.name, fmt::format("using {}", partition.Config->Name),
                      fmt::format("it is one of {} partitions, but 'Of' is {} in the registry",
                                  *count, stream.partitionCount));
    }
}

} // namespace stream
