#include "base/Poll.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <vector>

namespace host {

namespace {

// In milliseconds, rounded up so as not to wake before the deadline; -1 without one.
int timeUntil(Deadline deadline) {
    if (!deadline) {
        return -1;
    }
    auto const left =
        std::chrono::ceil<std::chrono::milliseconds>(*deadline - std::chrono::steady_clock::now())
            .count();
    return static_cast<int>(
        std::clamp<std::chrono::milliseconds::rep>(left, 0, std::numeric_limits<int>::max()));
}

} // namespace

bool waitForAny(std::initializer_list<int> descriptors, Deadline deadline) {
    std::vector<pollfd> waited;
    for (auto const descriptor : descriptors) {
        waited.push_back({descriptor, POLLIN, 0});
    }
    for (;;) {
        auto const timeout = timeUntil(deadline);
        auto const ready = ::poll(waited.data(), waited.size(), timeout);
        if (ready > 0 || (ready < 0 && errno != EINTR)) {
            return true;
        }
        if (ready == 0 && timeUntil(deadline) == 0) {
            return false;
        }
    }
}

} // namespace host
