#include "base/TimeText.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

namespace host {

std::string timeText(std::chrono::system_clock::time_point time) {
    auto const milliseconds =
        std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch()).count() % 1000;
    return fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:03}Z",
                       fmt::gmtime(std::chrono::system_clock::to_time_t(time)), milliseconds);
}

double unixSeconds(std::chrono::system_clock::time_point time) {
    return std::chrono::duration<double>(time.time_since_epoch()).count();
}

} // namespace host
