// Lines on their way to the partitions of a stream: which partition a line belongs to.
#pragma once

#include <simdjson.h>

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace stream {

// FNV-1a, 64 bits; of a text that goes on after another one with the hash of that one.
inline constexpr std::uint64_t emptyHash = 14695981039346656037U;
constexpr std::uint64_t hashOf(std::string_view text, std::uint64_t hash = emptyHash) {
    for (char const c : text) {
        hash ^= static_cast<unsigned char>(c);
        hash *= 1099511628211U;
    }
    return hash;
}

// The field that decides by its value, for each service; the one of the empty service is for all
// services that have none of their own.
class KeyFields {
public:
    static constexpr std::size_t padding = simdjson::SIMDJSON_PADDING;

    // From texts "[SERVICE=]FIELD"; the service is a value of the field INTERN_SERVICE_CODE. Throws
    // std::invalid_argument when a service is named twice, or a text is no such.
    explicit KeyFields(std::vector<std::string> const& keys);

    // The same key is always in the same partition, however it is written. Lines that have no such
    // field, headers and trailers among them, belong to partition 0. After the line, padding bytes
    // may be read.
    std::uint64_t partitionOf(std::string_view line, std::uint64_t partitions);

private:
    std::string const* fieldOf(simdjson::ondemand::object& edr) const;

    std::map<std::string, std::string, std::less<>> fieldsM; // by service
    simdjson::ondemand::parser parserM;
};

} // namespace stream
