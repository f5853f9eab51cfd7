// A byte string: any bytes, NUL included, compared byte-wise. A value that owns its bytes in a
// std::string, whose operations aren't repeated here.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iosfwd>
#include <string>
#include <string_view>

class RWCString {
public:
    RWCString() = default;
    RWCString(char const* text) : textM(text) {}
    RWCString(std::string text) noexcept : textM(std::move(text)) {}
    explicit RWCString(std::string_view text) : textM(text) {}
    RWCString(RWCString const&) = default;
    RWCString(RWCString&&) noexcept = default;
    ~RWCString() = default;
    RWCString& operator=(RWCString const& other) {
        // The usual case when a record is filled again, and the cheapest: the bytes are
        // overwritten.
        if (textM.size() == other.textM.size()) {
            copyBytes(textM.data(), other.textM.data(), textM.size());
        } else {
            textM = other.textM;
        }
        return *this;
    }
    RWCString& operator=(RWCString&&) noexcept = default;

    std::string const& str() const noexcept { return textM; }
    std::string_view view() const noexcept { return textM; }
    char const* data() const noexcept { return textM.c_str(); }
    std::size_t length() const noexcept { return textM.size(); }
    bool isNull() const noexcept { return textM.empty(); }

    // Replaces the bytes and keeps the storage, so that refilling a string with texts of similar
    // length allocates nothing.
    void assign(std::string_view text) { textM.assign(text); }
    void clear() noexcept { textM.clear(); }

    RWCString& operator+=(RWCString const& tail) {
        textM += tail.textM;
        return *this;
    }

    friend bool operator==(RWCString const& a, RWCString const& b) noexcept {
        return a.textM == b.textM;
    }
    friend std::strong_ordering operator<=>(RWCString const& a, RWCString const& b) noexcept {
        return a.textM <=> b.textM;
    }

private:
    // Most texts of an EDR have 1 to 16 bytes. From 2 on they go over as two words, which overlap
    // unless they fill the text: that takes half the instructions of a call that copies any number
    // of bytes. Both texts may be the same.
    static void copyBytes(char* to, char const* from, std::size_t size) noexcept {
        if (size - 8 <= 8) {
            copyTwoWords<std::uint64_t>(to, from, size);
        } else if (size - 4 <= 4) {
            copyTwoWords<std::uint32_t>(to, from, size);
        } else if (size - 2 <= 2) {
            copyTwoWords<std::uint16_t>(to, from, size);
        } else if (size == 1) {
            *to = *from;
        } else {
            std::memmove(to, from, size);
        }
    }
    template <class Word>
    static void copyTwoWords(char* to, char const* from, std::size_t size) noexcept {
        Word first;
        Word last;
        std::memcpy(&first, from, sizeof first);
        std::memcpy(&last, from + size - sizeof last, sizeof last);
        std::memcpy(to, &first, sizeof first);
        std::memcpy(to + size - sizeof last, &last, sizeof last);
    }

    std::string textM;
};

// Writes the bytes unchanged, without quotes and without fill; the stream's field width is reset.
std::ostream& operator<<(std::ostream& out, RWCString const& text);
