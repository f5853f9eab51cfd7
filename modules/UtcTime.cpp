#include "UtcTime.h"

#include <fmt/format.h>

#include <chrono>

namespace MOD {

namespace {

constexpr std::string_view shape = "0000-00-00T00:00:00Z";

bool hasShape(std::string_view text) noexcept {
    if (text.size() != shape.size()) {
        return false;
    }
    for (std::size_t i = 0; i < shape.size(); ++i) {
        bool const isDigit = text[i] >= '0' && text[i] <= '9';
        if (shape[i] == '0' ? !isDigit : text[i] != shape[i]) {
            return false;
        }
    }
    return true;
}

} // namespace

std::optional<UtcTime> UtcTime::fromText(std::string_view text) noexcept {
    if (!hasShape(text)) {
        return std::nullopt;
    }
    auto const number = [&](std::size_t at, std::size_t length) {
        unsigned value = 0;
        for (char const c : text.substr(at, length)) {
            value = value * 10 + static_cast<unsigned>(c - '0');
        }
        return value;
    };
    std::chrono::year_month_day const date{std::chrono::year(static_cast<int>(number(0, 4))),
                                           std::chrono::month(number(5, 2)),
                                           std::chrono::day(number(8, 2))};
    std::int64_t const hour = number(11, 2);
    std::int64_t const minute = number(14, 2);
    std::int64_t const second = number(17, 2);
    if (!date.ok() || hour > 23 || minute > 59 || second > 59) {
        return std::nullopt;
    }
    UtcTime time;
    time.secondsM = std::int64_t{std::chrono::sys_days(date).time_since_epoch().count()} * 86400 +
                    hour * 3600 + minute * 60 + second;
    return time;
}

std::string UtcTime::text() const {
    std::chrono::sys_seconds const time{std::chrono::seconds(secondsM)};
    auto const day = std::chrono::floor<std::chrono::days>(time);
    std::chrono::year_month_day const date(day);
    std::chrono::hh_mm_ss const clock(time - day);
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", static_cast<int>(date.year()),
                       static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                       clock.hours().count(), clock.minutes().count(), clock.seconds().count());
}

} // namespace MOD
