// Decompresses gzip data; members that follow each other are one text.
#pragma once

#include "input/Decompressor.h"

#include <zlib.h>

namespace host {

class GzipDecompressor : public Decompressor {
public:
    GzipDecompressor();
    ~GzipDecompressor() override;

    std::string_view format() const noexcept override { return "gzip"; }
    std::size_t decompress(std::span<char const>& source, std::span<char> target) override;
    bool isComplete() const noexcept override { return isMemberCompleteM; }

private:
    z_stream streamM{};
    bool isMemberCompleteM = false;
};

} // namespace host
