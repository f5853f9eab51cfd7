// Counts values: the first thousand different ones each by itself, all further ones together. Used
// by one thread at a time.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>

namespace host {

class ValueCounter {
public:
    static constexpr std::size_t mostValues = 1000;
    // Bytes; longer values count together too, so that they don't fill the memory.
    static constexpr std::size_t longestValue = 256;

    void count(std::string_view value);

    // Each with how often it came, in the order of their bytes.
    std::map<std::string, std::uint64_t> values() const { return {valuesM.begin(), valuesM.end()}; }
    std::uint64_t others() const noexcept { return othersM; }

private:
    // Finds a value without making a text of it.
    struct Hash : std::hash<std::string_view> {
        using is_transparent = void;
    };

    std::unordered_map<std::string, std::uint64_t, Hash, std::equal_to<>> valuesM;
    std::uint64_t othersM = 0;
};

} // namespace host
