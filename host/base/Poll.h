// Waiting for whatever comes first.
#pragma once

#include <chrono>
#include <initializer_list>
#include <optional>

namespace host {

using Deadline = std::optional<std::chrono::steady_clock::time_point>;

// Waits until one of the descriptors can be read without waiting, also at its end; negative numbers
// are passed over. Returns false when the deadline passes first; without one it never does.
bool waitForAny(std::initializer_list<int> descriptors, Deadline deadline = std::nullopt);

} // namespace host
