// Matches a line with a pattern such as "  Account {}: status {}": literal pieces, and between them
// values of any length. A value ends where the next literal piece begins for the first time; the
// last one goes to the line's end.
#pragma once

#include <array>
#include <string_view>

namespace reader {

using Captures = std::array<std::string_view, 5>;

bool matches(std::string_view pattern, std::string_view line, Captures& values);

} // namespace reader
