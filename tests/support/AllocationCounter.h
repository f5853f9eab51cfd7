// Counts the heap allocations of a program that links it, and makes some of them fail: it replaces
// the global operator new.
#pragma once

#include <cstddef>

namespace support {

// How many allocations the program has made so far, on all threads.
std::size_t allocationCount();

// Has so many allocations fail, on all threads, after so many that succeed.
void failAllocations(std::size_t after, std::size_t count);
// Ends that. Returns whether any failed.
bool stopFailingAllocations();

} // namespace support
