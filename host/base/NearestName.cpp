#include "base/NearestName.h"

#include <algorithm>
#include <cctype>
#include <numeric>

namespace host {

namespace {

bool sameLetter(char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) ==
           std::tolower(static_cast<unsigned char>(b));
}

// How many letters must be inserted, dropped, changed or swapped with their neighbour to turn one
// name into the other, ignoring case.
std::size_t editDistance(std::string_view one, std::string_view other) {
    std::vector<std::size_t> beforeLast(other.size() + 1);
    std::vector<std::size_t> last(other.size() + 1);
    std::vector<std::size_t> row(other.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= one.size(); ++i) {
        beforeLast.swap(last);
        last.swap(row);
        row[0] = i;
        for (std::size_t j = 1; j <= other.size(); ++j) {
            auto const changed = last[j - 1] + (sameLetter(one[i - 1], other[j - 1]) ? 0 : 1);
            row[j] = std::min({changed, last[j] + 1, row[j - 1] + 1});
            if (i > 1 && j > 1 && sameLetter(one[i - 1], other[j - 2]) &&
                sameLetter(one[i - 2], other[j - 1])) {
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
            }
        }
    }
    return row.back();
}

} // namespace

std::optional<std::string> nearestName(std::string_view mistyped,
                                       std::vector<std::string_view> const& known) {
    auto best = std::max<std::size_t>(1, mistyped.size() / 3) + 1;
    std::optional<std::string> nearest;
    for (auto const candidate : known) {
        if (candidate == mistyped) {
            return std::nullopt;
        }
        auto const lengths = std::minmax({mistyped.size(), candidate.size()});
        if (lengths.second - lengths.first >= best) {
            continue; // however much they have in common
        }
        auto const distance = editDistance(mistyped, candidate);
        if (distance < best) {
            best = distance;
            nearest = candidate;
        }
    }
    return nearest;
}

std::string nearestNameHint(std::string_view mistyped, std::vector<std::string_view> const& known) {
    auto const nearest = nearestName(mistyped, known);
    return nearest ? " (did you mean '" + *nearest + "'?)" : std::string();
}

} // namespace host
