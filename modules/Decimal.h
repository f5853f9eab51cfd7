// An exact decimal number of at most 18 digits, such as an amount of money. It keeps trailing
// zeros, so that 1.50 stays 1.50. A value.
#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace MOD {

class Decimal {
public:
    // The whole text: an optional sign, digits, and optionally a point with digits after it.
    // Nothing for any other text and for more than 18 digits without leading zeros.
    static std::optional<Decimal> fromText(std::string_view text) noexcept;

    std::string text() const;

    // Digits after the point.
    int scale() const noexcept { return scaleM; }

    // By value: 1.5 equals 1.50.
    friend std::strong_ordering operator<=>(Decimal const& a, Decimal const& b) noexcept;
    friend bool operator==(Decimal const& a, Decimal const& b) noexcept {
        return std::is_eq(a <=> b);
    }

private:
    // The number is digits * 10 ^ -scale.
    std::int64_t digitsM = 0;
    std::uint8_t scaleM = 0;
};

} // namespace MOD
