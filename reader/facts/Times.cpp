#include "facts/Times.h"

#include <charconv>
#include <chrono>

#include <fmt/format.h>

namespace reader {

namespace {

constexpr std::string_view isoForm = "0000-00-00T00:00:00Z";
constexpr std::string_view isoDateForm = "0000-00-00";

bool hasForm(std::string_view text, std::string_view form) {
    if (text.size() != form.size()) {
        return false;
    }
    for (std::size_t i = 0; i < form.size(); ++i) {
        bool const isDigit = text[i] >= '0' && text[i] <= '9';
        if (form[i] == '0' ? !isDigit : text[i] != form[i]) {
            return false;
        }
    }
    return true;
}

int number(std::string_view digits) {
    int value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return value;
}

} // namespace

std::optional<std::int64_t> chargingSeconds(std::string_view text) {
    constexpr std::int64_t endOfYear9999 = 253'402'300'799;
    std::int64_t seconds = 0;
    auto const* const end = text.data() + text.size();
    auto const read = std::from_chars(text.data(), end, seconds);
    bool const isUsable = read.ec == std::errc() && read.ptr == end && !text.empty() &&
                          seconds > 0 && seconds <= endOfYear9999;
    return isUsable ? std::optional(seconds) : std::nullopt;
}

std::string isoTime(std::int64_t seconds) {
    std::chrono::sys_seconds const time{std::chrono::seconds(seconds)};
    auto const day = std::chrono::floor<std::chrono::days>(time);
    std::chrono::year_month_day const date{day};
    std::chrono::hh_mm_ss const clock{time - day};
    std::string text(isoForm);
    auto const put = [&](std::size_t begin, std::size_t end, auto value) {
        auto rest = static_cast<unsigned>(value);
        for (; end > begin; rest /= 10) {
            text[--end] = static_cast<char>('0' + rest % 10);
        }
    };
    put(0, 4, static_cast<int>(date.year()));
    put(5, 7, static_cast<unsigned>(date.month()));
    put(8, 10, static_cast<unsigned>(date.day()));
    put(11, 13, clock.hours().count());
    put(14, 16, clock.minutes().count());
    put(17, 19, clock.seconds().count());
    return text;
}

bool isIsoTime(std::string_view text) {
    return hasForm(text, isoForm);
}

std::optional<std::int64_t> isoSeconds(std::string_view text) {
    if (!hasForm(text, isoForm) && !hasForm(text, isoDateForm)) {
        return std::nullopt;
    }
    auto const part = [&](std::size_t begin, std::size_t size) {
        return begin < text.size() ? number(text.substr(begin, size)) : 0;
    };
    std::chrono::year_month_day const date{std::chrono::year(part(0, 4)),
                                           std::chrono::month(static_cast<unsigned>(part(5, 2))),
                                           std::chrono::day(static_cast<unsigned>(part(8, 2)))};
    auto const hours = part(11, 2);
    auto const minutes = part(14, 2);
    auto const seconds = part(17, 2);
    if (!date.ok() || hours > 23 || minutes > 59 || seconds > 59) {
        return std::nullopt;
    }
    std::int64_t const day = std::chrono::sys_days(date).time_since_epoch().count();
    return ((day * 24 + hours) * 60 + minutes) * 60 + seconds;
}

std::string distance(std::string_view earlier, std::string_view later) {
    auto const from = isoSeconds(earlier);
    auto const to = isoSeconds(later);
    if (!from || !to) {
        return "some time";
    }
    struct Unit {
        std::int64_t seconds;
        char const* name;
    };
    constexpr Unit units[] = {{86'400, "day"}, {3600, "hour"}, {60, "minute"}, {1, "second"}};
    auto const seconds = *to - *from;
    for (auto const& unit : units) {
        if (auto const count = seconds / unit.seconds; count > 0) {
            return fmt::format("{} {}{}", count, unit.name, count == 1 ? "" : "s");
        }
    }
    return "0 seconds";
}

} // namespace reader
