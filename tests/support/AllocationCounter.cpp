#include "support/AllocationCounter.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> counted{0};
// Those that fail: none while the first is not below the end.
std::atomic<std::size_t> firstToFail{0};
std::atomic<std::size_t> endOfFailing{0};

} // namespace

std::size_t support::allocationCount() {
    return counted.load(std::memory_order_relaxed);
}

void support::failAllocations(std::size_t after, std::size_t count) {
    firstToFail = counted + after;
    endOfFailing = count < SIZE_MAX - firstToFail ? firstToFail + count : SIZE_MAX;
}

bool support::stopFailingAllocations() {
    bool const anyFailed = counted > firstToFail;
    endOfFailing = 0;
    return anyFailed;
}

void* operator new(std::size_t size) {
    auto const number = counted.fetch_add(1, std::memory_order_relaxed);
    if (number < endOfFailing.load(std::memory_order_relaxed) &&
        number >= firstToFail.load(std::memory_order_relaxed)) {
        throw std::bad_alloc();
    }
    if (void* const memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void* operator new(std::size_t size, std::nothrow_t const& /*tag*/) noexcept {
    try {
        return operator new(size);
    } catch (std::bad_alloc const&) {
        return nullptr;
    }
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
