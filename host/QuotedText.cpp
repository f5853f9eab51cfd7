#include "QuotedText.h"

#include <fmt/format.h>
#include <simdjson.h>

namespace host {

namespace {

constexpr unsigned char c1Lead = 0xc2; // in UTF-8, before the control characters U+0080 to U+009F

bool isC1(std::string_view text, std::size_t at) {
    return static_cast<unsigned char>(text[at]) == c1Lead && at + 1 < text.size() &&
           static_cast<unsigned char>(text[at + 1]) <= 0x9f;
}

} // namespace

std::string quotedText(std::string_view text) {
    bool const isUtf8 = simdjson::validate_utf8(text.data(), text.size());
    std::string result = "\"";
    for (std::size_t i = 0; i < text.size(); ++i) {
        auto const byte = static_cast<unsigned char>(text[i]);
        if (byte == '"' || byte == '\\') {
            result += {'\\', text[i]};
        } else if (byte < 0x20 || byte == 0x7f) {
            result += fmt::format("\\u{:04x}", byte);
        } else if (byte >= 0x80 && !isUtf8) {
            result += "\\ufffd";
        } else if (isC1(text, i)) {
            ++i;
            result += fmt::format("\\u{:04x}", static_cast<unsigned char>(text[i]));
        } else {
            result += text[i];
        }
    }
    return result + "\"";
}

} // namespace host
