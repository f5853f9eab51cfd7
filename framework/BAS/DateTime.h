// A point in time as seconds since the framework's own epoch, 1900-01-01 00:00:00 UTC, so that
// times before 1970 exist. A value.
#pragma once

#include <string_view>

class RWZone;

namespace BAS {

class DateTime {
public:
    DateTime() = default;
    explicit DateTime(unsigned long seconds) noexcept : secondsM(seconds) {}

    // From a text YYYYMMDDHHMMSS, read as UTC. A text of another shape, a day that the calendar
    // doesn't have and a time before the epoch have the value 0.
    static DateTime fromText(std::string_view text) noexcept;

    unsigned long seconds() const noexcept { return secondsM; }
    void seconds(unsigned long seconds) noexcept { secondsM = seconds; }

    // Moves seconds since the epoch between UTC and the zone's local time and stores the outcome in
    // adjusted: from UTC to local when toLocal is true, else from local to UTC. The object itself
    // does not change.
    void adjustTimezone(unsigned long seconds, unsigned long& adjusted, RWZone const& zone,
                        bool toLocal) const;

    // Seconds between this type's epoch and 1970-01-01 00:00:00 UTC.
    static unsigned long const rwToUnixSecsCM;

private:
    unsigned long secondsM = 0;
};

} // namespace BAS
