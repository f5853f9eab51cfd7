#include "Decimal.h"

#include <algorithm>

namespace MOD {

namespace {

constexpr std::size_t maxDigits = 18;

// Wide enough for a number of 18 digits with 18 more decimal places.
__extension__ using Wide = __int128;

Wide scaled(std::int64_t digits, int places) noexcept {
    Wide value = digits;
    for (int i = 0; i < places; ++i) {
        value *= 10;
    }
    return value;
}

bool isDigits(std::string_view text) noexcept {
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

} // namespace

std::optional<Decimal> Decimal::fromText(std::string_view text) noexcept {
    bool const negative = text.starts_with('-');
    if (negative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    auto const point = text.find('.');
    auto whole = text.substr(0, point);
    auto const fraction =
        point == std::string_view::npos ? std::string_view() : text.substr(point + 1);
    if (!isDigits(whole) || (point != std::string_view::npos && !isDigits(fraction))) {
        return std::nullopt;
    }
    whole.remove_prefix(std::min(whole.find_first_not_of('0'), whole.size()));
    if (whole.size() + fraction.size() > maxDigits) {
        return std::nullopt;
    }
    Decimal value;
    for (auto const part : {whole, fraction}) {
        for (char const c : part) {
            value.digitsM = value.digitsM * 10 + (c - '0');
        }
    }
    value.digitsM = negative ? -value.digitsM : value.digitsM;
    value.scaleM = static_cast<std::uint8_t>(fraction.size());
    return value;
}

std::string Decimal::text() const {
    auto digits = std::to_string(digitsM < 0 ? -digitsM : digitsM);
    if (digits.size() <= scaleM) {
        digits.insert(0, scaleM + 1 - digits.size(), '0');
    }
    if (scaleM > 0) {
        digits.insert(digits.size() - scaleM, 1, '.');
    }
    return digitsM < 0 ? "-" + digits : digits;
}

std::strong_ordering operator<=>(Decimal const& a, Decimal const& b) noexcept {
    return scaled(a.digitsM, b.scaleM) <=> scaled(b.digitsM, a.scaleM);
}

} // namespace MOD
