#include "base/EscapedText.h"

#include <fmt/format.h>
#include <simdjson.h>

namespace host {

namespace {

unsigned char byteAt(std::string_view text, std::size_t at) {
    return static_cast<unsigned char>(text[at]);
}

// Whether one of the control characters U+0080 to U+009F begins there; UTF-8 writes them as two
// bytes, of which the second is the character's number.
bool isC1(std::string_view text, std::size_t at) {
    return byteAt(text, at) == 0xc2 && at + 1 < text.size() && byteAt(text, at + 1) >= 0x80 &&
           byteAt(text, at + 1) <= 0x9f;
}

bool isControl(unsigned char byte) {
    return byte < 0x20 || byte == 0x7f;
}

// Replaces bytes by escapeOf(byte), unless that is empty.
template <class EscapeOf>
std::string escaped(std::string_view text, EscapeOf escapeOf) {
    bool const isUtf8 = simdjson::validate_utf8(text.data(), text.size());
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        auto const byte = byteAt(text, i);
        if (byte >= 0x80 && isUtf8) {
            if (isC1(text, i)) {
                result += fmt::format("\\u{:04x}", byteAt(text, ++i));
            } else {
                result += text[i];
            }
        } else if (auto const escape = escapeOf(byte); !escape.empty()) {
            result += escape;
        } else {
            result += text[i];
        }
    }
    return result;
}

std::string printableEscape(unsigned char byte) {
    switch (byte) {
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    case '\\':
        return "\\\\";
    default:
        return isControl(byte) || byte >= 0x80 ? fmt::format("\\x{:02x}", byte) : std::string();
    }
}

std::string quotedEscape(unsigned char byte) {
    if (byte == '"' || byte == '\\') {
        return {'\\', static_cast<char>(byte)};
    }
    if (byte >= 0x80) {
        return "\\ufffd";
    }
    return isControl(byte) ? fmt::format("\\u{:04x}", byte) : std::string();
}

} // namespace

std::string printable(std::string_view text) {
    return escaped(text, printableEscape);
}

bool hasControlCharacter(std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isControl(byteAt(text, i)) || isC1(text, i)) {
            return true;
        }
    }
    return false;
}

std::string quotedText(std::string_view text) {
    return '"' + escaped(text, quotedEscape) + '"';
}

} // namespace host
