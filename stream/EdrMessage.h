// A message of a stream: up to a hundred lines of EDRs, which are compressed, and in its headers
// what they are compressed with and where they come from.
#pragma once

#include "Connection.h"

#include <zstd.h>

#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

namespace stream {

inline constexpr std::size_t mostLines = 100;
inline constexpr std::size_t mostBytes = std::size_t{512} * 1024; // unless a single line is longer
inline constexpr std::size_t mostDecodedBytes = std::size_t{16} * 1024 * 1024;

// Why a message can't be taken.
class MessageError : public std::runtime_error {
public:
    using runtime_error::runtime_error;
};

// CRC-32 of lines with their ends.
struct SourceSums {
    std::uint32_t first = 0; // of the first one
    std::uint32_t all = 0;

    bool operator==(SourceSums const&) const = default;
};

// The source of lines, and which of its lines was the last in a message.
struct SourcePlace {
    std::string source;
    std::uint64_t line = 0;
    // Of the source up to that line; nothing in messages from before there were any.
    std::optional<SourceSums> sums = {};
    // The line of the message that its publisher sent before; 0 when that was of another source.
    std::uint64_t after = 0;

    bool operator==(SourcePlace const&) const = default;
};

// Compresses the lines of messages, one after the other; used by one thread at a time.
class MessageEncoder {
public:
    MessageEncoder();

    std::string compressed(std::string_view text);

private:
    Handle<ZSTD_CCtx, &ZSTD_freeCCtx> contextM;
    std::string roomM;
};

// Takes messages apart, one after the other; used by one thread at a time.
class MessageDecoder {
public:
    MessageDecoder();

    // How many bytes the lines take at most; the encoding is empty for plain text. Throws a
    // MessageError when the data don't say so or it is more than the bound.
    static std::size_t decodedSize(std::string_view encoding, std::string_view data);
    // Puts the lines into a target of that size, and returns how many bytes they have. Throws a
    // MessageError when the data are damaged.
    std::size_t decode(std::string_view encoding, std::string_view data, std::span<char> target);

private:
    Handle<ZSTD_DCtx, &ZSTD_freeDCtx> contextM;
};

// A message for the subject with compressed lines. Throws std::bad_alloc.
Message makeMessage(std::string const& subject, std::string_view data, SourcePlace const& place);
// More than its headers take, with those of the library.
std::size_t mostHeaderBytes(SourcePlace const& place);

// The exact header, or an empty text.
std::string header(natsMsg* message, char const* name);
std::string encodingOf(natsMsg* message);
SourcePlace placeOf(natsMsg* message);

} // namespace stream
