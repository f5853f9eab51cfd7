// Times as EDRs and the database write them.
#pragma once

#include <fmt/compile.h>
#include <fmt/format.h>

#include <chrono>
#include <cstdint>
#include <string>

namespace host {

// YYYYMMDDHHMMSS of seconds since 1970-01-01 00:00:00.
inline std::string edrTime(std::int64_t seconds) {
    std::chrono::sys_seconds const time{std::chrono::seconds(seconds)};
    auto const day = std::chrono::floor<std::chrono::days>(time);
    std::chrono::year_month_day const date{day};
    std::chrono::hh_mm_ss const clock{time - day};
    return fmt::format(FMT_COMPILE("{:04}{:02}{:02}{:02}{:02}{:02}"), static_cast<int>(date.year()),
                       static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                       clock.hours().count(), clock.minutes().count(), clock.seconds().count());
}

// YYYY-MM-DDT00:00:00Z of days since 1970-01-01.
inline std::string databaseDay(std::int32_t days) {
    std::chrono::year_month_day const date{std::chrono::sys_days{std::chrono::days(days)}};
    return fmt::format(FMT_COMPILE("{:04}-{:02}-{:02}T00:00:00Z"), static_cast<int>(date.year()),
                       static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
}

} // namespace host
