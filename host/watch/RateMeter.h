// How fast a counter grew over the last minute, by samples that are a second or more apart. Used by
// one thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>

namespace host {

class RateMeter {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    void add(TimePoint time, std::uint64_t count);
    // Up to the newest sample; 0 before there are two.
    double perSecond() const;

private:
    struct Sample {
        TimePoint time;
        std::uint64_t count;
    };

    std::deque<Sample> samplesM; // the oldest is a minute older than the newest, or less
};

} // namespace host
