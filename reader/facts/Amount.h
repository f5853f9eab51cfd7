// Amounts are exact decimals of any length, compared digit by digit.
#pragma once

#include <compare>
#include <optional>
#include <string_view>

namespace reader {

// None when one of them is no decimal such as "-12.50".
std::optional<std::strong_ordering> compareAmounts(std::string_view one, std::string_view other);

} // namespace reader
