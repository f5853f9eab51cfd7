// JSON that is put together from its parts, for files and answers of a few kilobytes.
#pragma once

#include "BAS/Status.h"

#include <chrono>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace host {

// Keys with the JSON of their values, in their order.
using JsonMembers = std::vector<std::pair<std::string_view, std::string>>;

std::string jsonObject(JsonMembers const& members);
std::string jsonArray(std::vector<std::string> const& elements);
std::string jsonTruth(bool value);
// Message, level and text.
std::string jsonStatus(BAS::Status const& status);
// The same after the name of its object.
std::string jsonStatusOfObject(BAS::Status const& status);
// In UTC, to the millisecond, as a text.
std::string jsonTime(std::chrono::system_clock::time_point time);

} // namespace host
