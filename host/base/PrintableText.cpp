#include "base/PrintableText.h"

#include "base/ControlCharacters.h"

#include <fmt/format.h>
#include <simdjson.h>

namespace host {

std::string printable(std::string_view text) {
    bool const isUtf8 = simdjson::validate_utf8(text.data(), text.size());
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
        } else if (byte < 0x20 || byte == 0x7f || (byte >= 0x80 && !isUtf8)) {
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
