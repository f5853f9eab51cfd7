// A request to stop, and for how long what was begun may still be brought to an end.
#pragma once

#include "base/Notification.h"

#include <chrono>
#include <optional>

namespace stream {

// Stop was set, and what is left isn't published.
struct PublishingStopped {};

// Used by one thread.
class GracePeriod {
public:
    // The notification must outlive the object.
    GracePeriod(host::Notification const& stop, std::chrono::milliseconds grace)
        : stopM(stop), graceM(grace) {}

    host::Notification const& stop() const noexcept { return stopM; }
    bool isStopping() const noexcept { return stopM.isSet(); }
    // The time counts from the first call after stop was set.
    bool isOver() {
        if (stopM.isSet() && !endM) {
            endM = std::chrono::steady_clock::now() + graceM;
        }
        return endM && std::chrono::steady_clock::now() >= *endM;
    }

private:
    host::Notification const& stopM;
    std::chrono::milliseconds graceM;
    std::optional<std::chrono::steady_clock::time_point> endM;
};

} // namespace stream
