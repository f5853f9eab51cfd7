// The conventions for numbers in texts: plain decimal digits with an optional sign, no grouping.
#pragma once

class RWCString;

class RWLocaleSnapshot {
public:
    // The whole text as one decimal number with an optional sign. For any other text, and for a
    // value out of range, returns false and leaves the target untouched.
    bool stringToNum(RWCString const& text, long* number) const;
};
