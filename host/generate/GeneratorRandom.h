// Random numbers that are the same for the same seed with every compiler and library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

namespace host {

class GeneratorRandom {
public:
    explicit GeneratorRandom(std::uint64_t seed) : engineM(seed) {}

    // From 0 to less than the limit.
    std::uint32_t below(std::uint32_t limit) {
        return static_cast<std::uint32_t>(((engineM() >> 32U) * limit) >> 32U);
    }
    bool isChance(std::uint32_t percent) { return below(100) < percent; }
    // From 0 to less than 1.
    double fraction() { return static_cast<double>(engineM() >> 11U) * 0x1p-53; }

private:
    std::mt19937_64 engineM;
};

// Ranks by Zipf's law with the exponent 1: rank k, counted from 0, is drawn in proportion to
// 1 / (k + 1).
class ZipfDistribution {
public:
    explicit ZipfDistribution(std::size_t ranks);

    std::uint32_t operator()(GeneratorRandom& random) const;

private:
    std::vector<double> sumsM; // of the weights up to each rank
};

} // namespace host
