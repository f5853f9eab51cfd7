// Suggestions for mistyped names.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace host {

// The known name that the mistyped one resembles most; nothing when none is near, and when the name
// is known.
std::optional<std::string> nearestName(std::string_view mistyped,
                                       std::vector<std::string_view> const& known);
// " (did you mean 'NAME'?)" for that name; empty without one.
std::string nearestNameHint(std::string_view mistyped, std::vector<std::string_view> const& known);

} // namespace host
