#include "page/PackedText.h"

#include <array>
#include <new>

namespace reader {

namespace {

constexpr int gzipWindow = 15 + 16; // with a header of gzip
constexpr int memoryLevel = 8;

} // namespace

PackedText::PackedText() {
    if (::deflateInit2(&streamM, Z_DEFAULT_COMPRESSION, Z_DEFLATED, gzipWindow, memoryLevel,
                       Z_DEFAULT_STRATEGY) != Z_OK) {
        throw std::bad_alloc();
    }
}

PackedText::~PackedText() {
    ::deflateEnd(&streamM);
}

void PackedText::add(std::string_view bytes) {
    constexpr std::size_t mostAtOnce = std::size_t{1} << 30U;
    sizeM += bytes.size();
    while (!bytes.empty()) {
        auto const piece = bytes.substr(0, mostAtOnce);
        streamM.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(piece.data()));
        streamM.avail_in = static_cast<uInt>(piece.size());
        deflateAll(Z_NO_FLUSH);
        bytes.remove_prefix(piece.size());
    }
}

std::string PackedText::finish() {
    deflateAll(Z_FINISH);
    return std::move(packedM);
}

void PackedText::deflateAll(int flush) {
    std::array<char, 65536> piece;
    do {
        streamM.next_out = reinterpret_cast<Bytef*>(piece.data());
        streamM.avail_out = piece.size();
        ::deflate(&streamM, flush);
        packedM.append(piece.data(), piece.size() - streamM.avail_out);
    } while (streamM.avail_out == 0);
}

std::string base64(std::string_view bytes) {
    constexpr std::string_view digits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            auto const byte = i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0U;
            group = group << 8U | byte;
        }
        for (std::size_t k = 0; k < 4; ++k) {
            bool const isPadding = i + k > bytes.size();
            text += isPadding ? '=' : digits[group >> (18 - 6 * k) & 63U];
        }
    }
    return text;
}

} // namespace reader
