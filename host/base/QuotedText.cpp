#include "base/QuotedText.h"

#include "base/ControlCharacters.h"

#include <fmt/format.h>
#include <simdjson.h>

namespace host {

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
