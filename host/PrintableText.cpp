#include "PrintableText.h"

#include <fmt/format.h>

namespace host {

namespace {

constexpr unsigned char c1Lead = 0xc2; // in UTF-8, before the control characters U+0080 to U+009F

bool isC1(std::string_view text, std::size_t at) {
    return static_cast<unsigned char>(text[at]) == c1Lead && at + 1 < text.size() &&
           static_cast<unsigned char>(text[at + 1]) >= 0x80 &&
           static_cast<unsigned char>(text[at + 1]) <= 0x9f;
}

} // namespace

std::string printable(std::string_view text) {
    std::string escaped;
    escaped.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        auto const byte = static_cast<unsigned char>(text[i]);
        if (byte == '\n') {
            escaped += "\\n";
        } else if (byte == '\r') {
            escaped += "\\r";
        } else if (byte == '\t') {
            escaped += "\\t";
        } else if (byte == '\\') {
            escaped += "\\\\";
        } else if (byte < 0x20 || byte == 0x7f) {
            escaped += fmt::format("\\x{:02x}", byte);
        } else if (isC1(text, i)) {
            ++i;
            escaped += fmt::format("\\u{:04x}", static_cast<unsigned char>(text[i]));
        } else {
            escaped += text[i];
        }
    }
    return escaped;
}

} // namespace host
