// Counts the heap allocations of a program that links it: it replaces the global operator new.
#pragma once

#include <cstddef>

namespace support {

// How many allocations the program has made so far, on all threads.
std::size_t allocationCount();

} // namespace support
