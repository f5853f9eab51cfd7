// Turns the compressed bytes of a file back into what they were made from, piece by piece. One
// object serves one file, whose compressed parts may follow each other; one thread uses it.
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

    // What the compressed bytes are called in messages.
    virtual std::string_view format() const noexcept = 0;

    // Removes from the front of source what it takes and returns how many bytes it put into target,
    // of which all fit; 0 with an empty source asks for more bytes. Throws a std::runtime_error
    // with the reason when the bytes can't be decompressed; what stands before them has then been
    // returned by the calls before.
    virtual std::size_t decompress(std::span<char const>& source, std::span<char> target) = 0;

    // Whether the compressed bytes may end here.
    virtual bool isComplete() const noexcept = 0;
};

} // namespace host
