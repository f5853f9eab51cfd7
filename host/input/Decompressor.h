// Decompresses the bytes of one file piece by piece. The file may consist of several compressed
// parts. Used by one thread.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace host {

class Decompressor {
public:
    Decompressor() = default;
    Decompressor(Decompressor const&) = delete;
    Decompressor& operator=(Decompressor const&) = delete;
    virtual ~Decompressor() = default;

    // The name of the format in messages.
    virtual std::string_view format() const noexcept = 0;

    // Removes the bytes that it uses from the front of source and returns how many it put into
    // target; 0 with an empty source asks for more bytes. Throws a std::runtime_error with the
    // reason when the bytes can't be decompressed; earlier calls have then returned all that comes
    // before them.
    virtual std::size_t decompress(std::span<char const>& source, std::span<char> target) = 0;

    // Whether the compressed bytes may end here.
    virtual bool isComplete() const noexcept = 0;
};

} // namespace host
