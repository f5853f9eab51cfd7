// Waits for several files and a deadline at once.
#pragma once

#include <chrono>
#include <initializer_list>
#include <optional>

namespace host {

using Deadline = std::optional<std::chrono::steady_clock::time_point>;

// Waits until one of the descriptors is readable or at its end; negative numbers are skipped.
// Returns false when the deadline passes first.
bool waitForAny(std::initializer_list<int> descriptors, Deadline deadline = std::nullopt);

} // namespace host
