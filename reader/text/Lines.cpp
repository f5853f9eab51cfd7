#include "text/Lines.h"

#include <array>
#include <bit>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace reader {

namespace {

constexpr std::size_t blockSize = 64;

// A bit for each byte of a block, set where the line ends.
std::uint64_t lineEndBits(char const* block) {
    std::uint64_t bits = 0;
#ifdef __SSE2__
    constexpr std::size_t width = sizeof(__m128i);
    auto const lineEnd = _mm_set1_epi8('\n');
    for (std::size_t i = 0; i < blockSize; i += width) {
        auto const bytes = _mm_loadu_si128(reinterpret_cast<__m128i const*>(block + i));
        auto const found = _mm_movemask_epi8(_mm_cmpeq_epi8(bytes, lineEnd));
        bits |= static_cast<std::uint64_t>(found) << i;
    }
#else
    for (std::size_t i = 0; i < blockSize; ++i) {
        bits |= static_cast<std::uint64_t>(block[i] == '\n') << i;
    }
#endif
    return bits;
}

// The places of a piece's line ends, gathered before they go to where they are kept. A block seldom
// has more line ends than are written without asking whether they are there.
class PieceEnds {
public:
    static constexpr std::size_t blocks = 16;

    void add(std::uint64_t bits, std::size_t place) {
        constexpr int usual = 4;
        for (int i = 0; i < usual; ++i) {
            addLowest(bits, place);
        }
        while (bits != 0) {
            addLowest(bits, place);
        }
    }

    void moveTo(std::vector<std::size_t>& ends) {
        ends.insert(ends.end(), placesM.begin(),
                    placesM.begin() + static_cast<std::ptrdiff_t>(countM));
        countM = 0;
    }

private:
    void addLowest(std::uint64_t& bits, std::size_t place) {
        placesM[countM] = place + static_cast<std::size_t>(std::countr_zero(bits));
        countM += bits != 0 ? 1 : 0;
        bits &= bits - 1;
    }

    std::array<std::size_t, blocks * blockSize + 1> placesM;
    std::size_t countM = 0;
};

} // namespace

void appendLineEnds(std::string_view text, std::size_t before, std::vector<std::size_t>& ends) {
    PieceEnds piece;
    std::size_t at = 0;
    while (text.size() - at >= blockSize) {
        for (std::size_t i = 0; i < PieceEnds::blocks && text.size() - at >= blockSize; ++i) {
            piece.add(lineEndBits(text.data() + at), before + at);
            at += blockSize;
        }
        piece.moveTo(ends);
    }
    for (; at < text.size(); ++at) {
        if (text[at] == '\n') {
            ends.push_back(before + at);
        }
    }
}

} // namespace reader
