// The control characters that UTF-8 writes as two bytes.
#pragma once

#include <string_view>

namespace host {

// Whether one of U+0080 to U+009F begins there; its second byte is the character's number.
inline bool isC1(std::string_view text, std::size_t at) {
    auto const byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    return byte(at) == 0xc2 && at + 1 < text.size() && byte(at + 1) >= 0x80 && byte(at + 1) <= 0x9f;
}

} // namespace host
