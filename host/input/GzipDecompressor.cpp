#include "input/GzipDecompressor.h"

#include <algorithm>
#include <limits>
#include <new>
#include <stdexcept>

namespace host {

namespace {

// The largest window, and the gzip format.
constexpr int windowBits = 15 + 16;

uInt clampedSize(std::size_t size) {
    return static_cast<uInt>(std::min<std::size_t>(size, std::numeric_limits<uInt>::max()));
}

} // namespace

GzipDecompressor::GzipDecompressor() {
    if (::inflateInit2(&streamM, windowBits) != Z_OK) {
        throw std::bad_alloc();
    }
}

GzipDecompressor::~GzipDecompressor() {
    ::inflateEnd(&streamM);
}

std::size_t GzipDecompressor::decompress(std::span<char const>& source, std::span<char> target) {
    if (isMemberCompleteM && !source.empty()) {
        ::inflateReset(&streamM);
        isMemberCompleteM = false;
    }
    auto const sourceSize = clampedSize(source.size());
    auto const targetSize = clampedSize(target.size());
    streamM.next_in = reinterpret_cast<Bytef z_const*>(const_cast<char*>(source.data()));
    streamM.avail_in = sourceSize;
    streamM.next_out = reinterpret_cast<Bytef*>(target.data());
    streamM.avail_out = targetSize;
    auto const outcome = ::inflate(&streamM, Z_NO_FLUSH);
    source = source.subspan(sourceSize - streamM.avail_in);
    std::size_t const produced = targetSize - streamM.avail_out;
    isMemberCompleteM = outcome == Z_STREAM_END;
    bool const isStalled = outcome == Z_BUF_ERROR; // needs more bytes: not an error
    if (outcome != Z_OK && !isMemberCompleteM && !isStalled && produced == 0) {
        throw std::runtime_error(streamM.msg != nullptr ? streamM.msg : ::zError(outcome));
    }
    return produced;
}

} // namespace host
