#include "EdrMessage.h"

#include "BAS/String.h"

#include <fmt/format.h>
#include <zstd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <new>

namespace stream {

namespace {

// No name is the beginning of another: the library would mix them up.
constexpr char const* encodingHeader = "Edr-Encoding";
constexpr char const* sourceHeader = "Edr-Source";
constexpr char const* lineHeader = "Edr-Line";
constexpr char const* sumsHeader = "Edr-Sums";
constexpr char const* afterHeader = "Edr-After";
constexpr char const* zstdEncoding = "zstd";
constexpr int level = 1;
// Lines resemble each other at length: without the shortest matches they come out smaller and are
// compressed and decompressed faster.
constexpr int leastMatch = 7; // bytes
constexpr char escape = '%';

void setHeader(natsMsg* message, char const* name, std::string const& value) {
    if (natsMsgHeader_Set(message, name, value.c_str()) != NATS_OK) {
        throw std::bad_alloc();
    }
}

// A header can't hold line ends, and loses blanks at its ends.
std::string encoded(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        auto const c = static_cast<unsigned char>(text[i]);
        bool const isOuterBlank = c == ' ' && (i == 0 || i + 1 == text.size());
        if (c < ' ' || c == 0x7f || c == escape || isOuterBlank) {
            result += fmt::format("{}{:02x}", escape, c);
        } else {
            result += text[i];
        }
    }
    return result;
}

std::string decoded(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned char c = 0;
        auto const* const digits = text.data() + i + 1;
        if (text[i] == escape && i + 2 < text.size() &&
            std::from_chars(digits, digits + 2, c, 16).ptr == digits + 2) {
            result += static_cast<char>(c);
            i += 2;
        } else {
            result += text[i];
        }
    }
    return result;
}

// 0 when there is none.
std::uint64_t numberIn(natsMsg* message, char const* name) {
    long number = 0;
    bool const isNumber = BAS::String(header(message, name)).toNum(number) && number > 0;
    return isNumber ? static_cast<std::uint64_t>(number) : 0;
}

std::optional<SourceSums> parsedSums(std::string const& text) {
    SourceSums sums;
    auto const* const end = text.data() + text.size();
    auto const first = std::from_chars(text.data(), end, sums.first, 16);
    if (first.ec != std::errc() || first.ptr == end || *first.ptr != '-') {
        return std::nullopt;
    }
    auto const all = std::from_chars(first.ptr + 1, end, sums.all, 16);
    return all.ec == std::errc() && all.ptr == end ? std::optional(sums) : std::nullopt;
}

} // namespace

MessageEncoder::MessageEncoder() : contextM(::ZSTD_createCCtx()) {
    if (contextM == nullptr) {
        throw std::bad_alloc();
    }
    ::ZSTD_CCtx_setParameter(contextM.get(), ZSTD_c_compressionLevel, level);
    ::ZSTD_CCtx_setParameter(contextM.get(), ZSTD_c_minMatch, leastMatch);
}

std::string MessageEncoder::compressed(std::string_view text) {
    roomM.resize(std::max(roomM.size(), ::ZSTD_compressBound(text.size())));
    auto const size =
        ::ZSTD_compress2(contextM.get(), roomM.data(), roomM.size(), text.data(), text.size());
    if (::ZSTD_isError(size) != 0) {
        throw std::bad_alloc(); // with enough room nothing else can fail
    }
    return roomM.substr(0, size);
}

MessageDecoder::MessageDecoder() : contextM(::ZSTD_createDCtx()) {
    if (contextM == nullptr) {
        throw std::bad_alloc();
    }
}

std::size_t MessageDecoder::decodedSize(std::string_view encoding, std::string_view data) {
    if (encoding.empty()) {
        return data.size();
    }
    if (encoding != zstdEncoding) {
        throw MessageError("its encoding is '" + std::string(encoding) + "', expected 'zstd'");
    }
    // The size that a frame claims may be a lie, so it bounds the room and nothing else.
    auto const claimed = ::ZSTD_getFrameContentSize(data.data(), data.size());
    if (claimed == ZSTD_CONTENTSIZE_ERROR || claimed == ZSTD_CONTENTSIZE_UNKNOWN) {
        throw MessageError("its zstd data are damaged or don't say their size");
    }
    if (claimed > mostDecodedBytes) {
        throw MessageError("its zstd data come to " + std::to_string(claimed) +
                           " bytes, expected at most " + std::to_string(mostDecodedBytes));
    }
    return claimed;
}

std::size_t MessageDecoder::decode(std::string_view encoding, std::string_view data,
                                   std::span<char> target) {
    if (encoding.empty()) {
        std::ranges::copy(data, target.begin());
        return data.size();
    }
    auto const size = ::ZSTD_decompressDCtx(contextM.get(), target.data(), target.size(),
                                            data.data(), data.size());
    if (::ZSTD_isError(size) != 0) {
        throw MessageError(std::string("its zstd data are damaged: ") + ::ZSTD_getErrorName(size));
    }
    return size;
}

Message makeMessage(std::string const& subject, std::string_view data, SourcePlace const& place) {
    natsMsg* made = nullptr;
    if (natsMsg_Create(&made, subject.c_str(), nullptr, data.data(),
                       static_cast<int>(data.size())) != NATS_OK) {
        throw std::bad_alloc();
    }
    Message message(made);
    setHeader(made, encodingHeader, zstdEncoding);
    setHeader(made, sourceHeader, place.sums ? encoded(place.source) : place.source);
    setHeader(made, lineHeader, std::to_string(place.line));
    if (place.sums) {
        setHeader(made, sumsHeader, fmt::format("{:x}-{:x}", place.sums->first, place.sums->all));
    }
    if (place.after != 0) {
        setHeader(made, afterHeader, std::to_string(place.after));
    }
    return message;
}

std::size_t mostHeaderBytes(SourcePlace const& place) {
    constexpr std::size_t others = 400;
    return others + encoded(place.source).size();
}

std::string header(natsMsg* message, char const* name) {
    // Listing the names has the library take the headers apart; before that, it would also find a
    // longer name that begins with this one, and read past shorter ones.
    char const** names = nullptr;
    int count = 0;
    if (natsMsgHeader_Keys(message, &names, &count) != NATS_OK) {
        return {};
    }
    bool const isThere = std::any_of(
        names, names + count, [&](char const* each) { return each == std::string_view(name); });
    std::free(names);
    char const* value = nullptr;
    return isThere && natsMsgHeader_Get(message, name, &value) == NATS_OK ? value : std::string();
}

std::string encodingOf(natsMsg* message) {
    return header(message, encodingHeader);
}

SourcePlace placeOf(natsMsg* message) {
    SourcePlace place;
    place.sums = parsedSums(header(message, sumsHeader));
    // Sources weren't encoded before there were sums.
    auto const source = header(message, sourceHeader);
    place.source = place.sums ? decoded(source) : source;
    place.line = numberIn(message, lineHeader);
    place.after = numberIn(message, afterHeader);
    return place;
}

} // namespace stream
