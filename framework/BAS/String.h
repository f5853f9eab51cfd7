// The framework's string: a byte string with the conversions that registry values and EDR fields
// need.
#pragma once

#include "RW/RWCString.h"
#include "RW/RWLocaleSnapshot.h"
#include "RW/RWTValOrderedVector.h"

#include <functional>

namespace BAS {

class String : public RWCString {
public:
    using RWCString::RWCString;
    String() = default;
    String(RWCString text) noexcept : RWCString(std::move(text)) {}

    // The pieces between the separators, in order: empty pieces are kept and nothing is trimmed, so
    // the empty text is one empty piece.
    RWTValOrderedVector<String> split(char separator) const;

    // The whole text as one decimal number with an optional sign. For any other text, and for a
    // value out of range, returns false and leaves the target untouched.
    bool toNum(int& number) const;
    bool toNum(long& number) const;
    bool toNum(unsigned long& number) const;

    // The framework's conventions for numbers.
    static RWLocaleSnapshot const localeCM;
};

inline String operator+(String const& head, RWCString const& tail) {
    String joined(head);
    joined += tail;
    return joined;
}

// The empty string, for arguments that are not given.
extern String const NULL_STRING;

} // namespace BAS

template <>
struct std::hash<BAS::String> {
    std::size_t operator()(BAS::String const& text) const noexcept {
        return std::hash<std::string_view>{}(text.view());
    }
};
