// A time zone of fixed offset.
#pragma once

class RWZone {
public:
    static RWZone const& utc();

    // Seconds to add to a time in UTC to get the zone's local time.
    long utcOffset() const noexcept { return utcOffsetM; }

private:
    explicit constexpr RWZone(long utcOffset) noexcept : utcOffsetM(utcOffset) {}

    long utcOffsetM;
};
