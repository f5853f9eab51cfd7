// Times as logs and results show them.
#pragma once

#include <chrono>
#include <string>

namespace host {

// In UTC, with milliseconds: "2026-11-21T03:34:29.107Z".
std::string timeText(std::chrono::system_clock::time_point time);

// Since 1970, in UTC.
double unixSeconds(std::chrono::system_clock::time_point time);

} // namespace host
