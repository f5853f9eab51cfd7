#include "NearestName.h"

#include <algorithm>
#include <cctype>
#include <numeric>

namespace host {

namespace {

bool sameLetter(char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) ==
           std::tolower(static_cast<unsigned char>(b));
}

// How many letters have to be inserted, dropped or changed to make one name the other; case doesn't
// count.
std::size_t editDistance(std::string_view one, std::string_view other) {
    std::vector<std::size_t> row(other.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < one.size(); ++i) {
        auto diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < other.size(); ++j) {
            auto const changed = diagonal + (sameLetter(one[i], other[j]) ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

} // namespace

std::string nearestNameHint(std::string_view mistyped, std::vector<std::string_view> const& known) {
    auto best = std::max<std::size_t>(1, mistyped.size() / 3) + 1;
    std::string_view nearest;
    for (auto const candidate : known) {
        auto const distance = editDistance(mistyped, candidate);
        if (distance < best) {
            best = distance;
            nearest = candidate;
        }
    }
    return nearest.empty() ? "" : ", did you mean '" + std::string(nearest) + "'?";
}

} // namespace host
