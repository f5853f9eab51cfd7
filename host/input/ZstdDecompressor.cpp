#include "input/ZstdDecompressor.h"

#include <algorithm>
#include <new>
#include <stdexcept>

namespace host {

namespace {

constexpr std::size_t blockHeaderSize = 3;

// A call that fails doesn't report what it put into the target before. So each call gets at most
// the rest of one block, without the header of the next.
std::size_t sizeOfOneStep(std::size_t expected) {
    return expected > blockHeaderSize ? expected - blockHeaderSize
                                      : std::max<std::size_t>(expected, 1);
}

} // namespace

ZstdDecompressor::ZstdDecompressor() : streamM(::ZSTD_createDStream()) {
    if (streamM == nullptr) {
        throw std::bad_alloc();
    }
    expectedM = ::ZSTD_initDStream(streamM.get());
}

std::size_t ZstdDecompressor::decompress(std::span<char const>& source, std::span<char> target) {
    if (source.empty() && isComplete()) {
        return 0;
    }
    ZSTD_inBuffer in{source.data(), std::min(source.size(), sizeOfOneStep(expectedM)), 0};
    ZSTD_outBuffer out{target.data(), target.size(), 0};
    auto const outcome = ::ZSTD_decompressStream(streamM.get(), &out, &in);
    if (::ZSTD_isError(outcome) != 0) {
        throw std::runtime_error(::ZSTD_getErrorName(outcome));
    }
    source = source.subspan(in.pos);
    expectedM = outcome;
    return out.pos;
}

} // namespace host
