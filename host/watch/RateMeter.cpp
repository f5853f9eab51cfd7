#include "watch/RateMeter.h"

namespace host {

namespace {

constexpr std::chrono::seconds apart(1);
constexpr std::chrono::seconds span(60);

} // namespace

void RateMeter::add(TimePoint time, std::uint64_t count) {
    if (!samplesM.empty() && time - samplesM.back().time < apart) {
        return;
    }
    samplesM.push_back({time, count});
    while (samplesM.size() > 2 && time - samplesM.front().time > span) {
        samplesM.pop_front();
    }
}

double RateMeter::perSecond() const {
    if (samplesM.size() < 2) {
        return 0;
    }
    auto const& first = samplesM.front();
    auto const& last = samplesM.back();
    return static_cast<double>(last.count - first.count) /
           std::chrono::duration<double>(last.time - first.time).count();
}

} // namespace host
