#include "generate/GeneratorRandom.h"

#include <algorithm>

namespace host {

ZipfDistribution::ZipfDistribution(std::size_t ranks) {
    sumsM.reserve(ranks);
    double sum = 0;
    for (std::size_t rank = 0; rank < ranks; ++rank) {
        sum += 1.0 / static_cast<double>(rank + 1);
        sumsM.push_back(sum);
    }
}

std::uint32_t ZipfDistribution::operator()(GeneratorRandom& random) const {
    auto const found =
        std::upper_bound(sumsM.begin(), sumsM.end() - 1, random.fraction() * sumsM.back());
    return static_cast<std::uint32_t>(found - sumsM.begin());
}

} // namespace host
