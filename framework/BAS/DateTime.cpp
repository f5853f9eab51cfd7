#include "BAS/DateTime.h"

#include "RW/RWZone.h"

#include <algorithm>
#include <chrono>

namespace BAS {

namespace {

constexpr std::chrono::sys_days epoch =
    std::chrono::year(1900) / std::chrono::January / std::chrono::day(1);
constexpr long secondsBeforeUnixEpoch =
    -std::chrono::duration_cast<std::chrono::seconds>(epoch.time_since_epoch()).count();

constexpr std::size_t textLength = 14;

} // namespace

unsigned long const DateTime::rwToUnixSecsCM = secondsBeforeUnixEpoch;

DateTime DateTime::fromText(std::string_view text) noexcept {
    if (text.size() != textLength ||
        !std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; })) {
        return DateTime();
    }
    auto const twoDigits = [&](std::size_t at) {
        return static_cast<unsigned>((text[at] - '0') * 10 + (text[at + 1] - '0'));
    };
    auto const year = static_cast<int>(twoDigits(0) * 100 + twoDigits(2));
    std::chrono::year_month_day const date{
        std::chrono::year(year), std::chrono::month(twoDigits(4)), std::chrono::day(twoDigits(6))};
    auto const hour = twoDigits(8);
    auto const minute = twoDigits(10);
    auto const second = twoDigits(12);
    if (!date.ok() || hour > 23 || minute > 59 || second > 59) {
        return DateTime();
    }
    auto const days = (std::chrono::sys_days(date) - epoch).count();
    if (days < 0) {
        return DateTime();
    }
    return DateTime(static_cast<unsigned long>(days) * 86400 + hour * 3600UL + minute * 60UL +
                    second);
}

void DateTime::adjustTimezone(unsigned long seconds, unsigned long& adjusted, RWZone const& zone,
                              bool toLocal) const {
    auto const offset = static_cast<unsigned long>(zone.utcOffset());
    adjusted = toLocal ? seconds + offset : seconds - offset;
}

} // namespace BAS
