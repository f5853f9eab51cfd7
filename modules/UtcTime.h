// Points in time of the reference data, to the second, in UTC and ISO 8601, such as
// 2026-01-31T00:00:00Z. Values.
#pragma once

#include <compare>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace MOD {

class UtcTime {
public:
    // Nothing for a text of another shape and for a day or time that doesn't exist.
    static std::optional<UtcTime> fromText(std::string_view text) noexcept;

    // Later than every time that has a text.
    static UtcTime never() noexcept {
        UtcTime time;
        time.secondsM = std::numeric_limits<std::int64_t>::max();
        return time;
    }

    std::string text() const;

    friend bool operator==(UtcTime const&, UtcTime const&) = default;
    friend std::strong_ordering operator<=>(UtcTime const& a, UtcTime const& b) noexcept {
        return a.secondsM <=> b.secondsM;
    }

private:
    // Since 1970-01-01 00:00:00 UTC.
    std::int64_t secondsM = 0;
};

// Where a validity ends: before a point in time, or open.
class EndTime {
public:
    EndTime() = default;
    explicit EndTime(UtcTime time) noexcept : timeM(time) {}

    // "open" for an open end.
    std::string text() const { return timeM == UtcTime::never() ? "open" : timeM.text(); }

    friend bool operator==(EndTime const&, EndTime const&) = default;
    friend std::strong_ordering operator<=>(EndTime const& a, EndTime const& b) noexcept {
        return a.timeM <=> b.timeM;
    }

private:
    UtcTime timeM = UtcTime::never();
};

} // namespace MOD
