// Suggestions for mistyped names.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host {

// " (did you mean 'NAME'?)" for the known name that the mistyped one resembles most; empty when
// none is near, and when the name is known.
std::string nearestNameHint(std::string_view mistyped, std::vector<std::string_view> const& known);

} // namespace host
