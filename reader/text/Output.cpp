#include "text/Output.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace reader {

namespace {

constexpr std::size_t pieceSize = std::size_t{1} << 16U;

void writeToStandardOutput(std::string_view text) {
    if (!writeAll(STDOUT_FILENO, text)) {
        throw OutputError(std::string("standard output can't be written: ") + std::strerror(errno));
    }
}

bool isControl(std::string_view text, std::size_t at) {
    auto const code = static_cast<unsigned char>(text[at]);
    bool const isOfLatin =
        code == 0xc2 && at + 1 < text.size() && static_cast<unsigned char>(text[at + 1]) < 0xa0;
    return code < 0x20 || code == 0x7f || isOfLatin;
}

} // namespace

bool writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        auto const count = ::write(descriptor, text.data(), text.size());
        if (count >= 0) {
            text.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

void Output::write(std::string_view text) {
    if (bufferM.size() + text.size() > pieceSize) {
        flush();
    }
    if (text.size() > pieceSize) {
        writeToStandardOutput(text);
    } else {
        bufferM += text;
    }
}

void Output::flush() {
    writeToStandardOutput(bufferM);
    bufferM.clear();
}

std::string printable(std::string_view text) {
    std::string shown;
    appendPrintable(shown, text);
    return shown;
}

void appendPrintable(std::string& shown, std::string_view text) {
    std::size_t begin = 0; // of what needs no escape
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (isControl(text, at)) {
            shown += text.substr(begin, at - begin);
            shown += fmt::format("\\x{:02x}", static_cast<unsigned char>(text[at]));
            begin = at + 1;
        }
    }
    shown += text.substr(begin);
}

} // namespace reader
