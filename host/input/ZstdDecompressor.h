// Decompresses Zstandard data; frames that follow each other are one text.
#pragma once

#include "input/Decompressor.h"

#include <memory>
#include <zstd.h>

namespace host {

class ZstdDecompressor : public Decompressor {
public:
    ZstdDecompressor();

    std::string_view format() const noexcept override { return "zstd"; }
    std::size_t decompress(std::span<char const>& source, std::span<char> target) override;
    bool isComplete() const noexcept override { return expectedM == 0; }

private:
    struct Free {
        void operator()(ZSTD_DStream* stream) const noexcept { ::ZSTD_freeDStream(stream); }
    };

    std::unique_ptr<ZSTD_DStream, Free> streamM;
    // Compressed bytes up to the end of the present block and of the next one's header; 0 between
    // frames.
    std::size_t expectedM;
};

} // namespace host
