// Times of the two texts: seconds since 1970 in what an event says, ISO 8601 in UTC in what modules
// say ("2026-11-01T00:00:00Z", or "open" for an end that isn't set).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace reader {

// Seconds since 1970 of a charging start; none when it is 0, no number or beyond the year 9999.
std::optional<std::int64_t> chargingSeconds(std::string_view text);

// "2026-11-20T12:00:00Z", of a time of the years 0 to 9999.
std::string isoTime(std::int64_t seconds);

bool isIsoTime(std::string_view text);
// Of an ISO time with or without its clock ("2026-11-20", "2026-11-20T12:00:00Z"); none when it is
// something else.
std::optional<std::int64_t> isoSeconds(std::string_view text);

// "20 days", "3 hours": how far two ISO times are apart, in the largest unit that fits.
std::string distance(std::string_view earlier, std::string_view later);

} // namespace reader
