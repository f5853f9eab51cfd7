// A 64-bit hash of bytes, fast on texts of a few hundred.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

namespace reader {

inline std::uint64_t mixed(std::uint64_t hash, std::uint64_t word) {
    constexpr std::uint64_t oddMultiplier = 0x9e3779b97f4a7c15U;
    hash = (hash ^ word) * oddMultiplier;
    return hash ^ (hash >> 29U);
}

inline std::uint64_t hashOf(std::string_view text, std::uint64_t seed = 0) {
    auto hash = mixed(seed, text.size() + 1);
    std::uint64_t word = 0;
    for (; text.size() >= sizeof word; text.remove_prefix(sizeof word)) {
        std::memcpy(&word, text.data(), sizeof word);
        hash = mixed(hash, word);
    }
    if (!text.empty()) {
        word = 0;
        std::memcpy(&word, text.data(), text.size());
        hash = mixed(hash, word);
    }
    return mixed(hash, hash >> 32U);
}

} // namespace reader
