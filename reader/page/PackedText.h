// Bytes as a page can carry them: compressed with gzip, and as base64.
#pragma once

#include <zlib.h>

#include <string>
#include <string_view>

namespace reader {

class PackedText {
public:
    PackedText();
    ~PackedText();
    PackedText(PackedText const&) = delete;
    PackedText& operator=(PackedText const&) = delete;

    void add(std::string_view bytes);
    // Nothing can be added afterwards.
    std::string finish();

    // Of the bytes that were added.
    std::size_t size() const noexcept { return sizeM; }

private:
    void deflateAll(int flush);

    z_stream streamM{};
    std::string packedM;
    std::size_t sizeM = 0;
};

std::string base64(std::string_view bytes);

} // namespace reader
