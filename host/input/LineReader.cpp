#include "input/LineReader.h"

#include <algorithm>
#include <cstring>

namespace host {

namespace {

// The bytes that are read at a time, few enough to stay in the cache until they are parsed.
constexpr std::size_t blockSize = std::size_t{256} * 1024;
constexpr std::size_t leastCapacity = 2 * blockSize;
constexpr std::size_t longestLineEnd = 2;

} // namespace

LineReader::LineReader(InputFile& input, std::size_t limit, std::size_t padding)
    : inputM(input), limitM(limit), paddingM(padding),
      bufferM(std::max(limit + longestLineEnd, leastCapacity) + padding) {
}

bool LineReader::nextLine() {
    while (nextPiece()) {
    }
    isTooLongM = false;
    if (!takePiece()) {
        return false;
    }
    ++numberM;
    isTooLongM = !isCompleteM || line().size() > limitM;
    return true;
}

bool LineReader::nextPiece() {
    if (isCompleteM) {
        return false;
    }
    takePiece();
    return true;
}

std::string_view LineReader::line() const noexcept {
    auto text = raw();
    if (text.ends_with('\n')) {
        text.remove_suffix(text.ends_with("\r\n") ? 2 : 1);
    }
    return text;
}

std::string_view LineReader::raw() const noexcept {
    return {bufferM.data() + beginM, pieceEndM - beginM};
}

bool LineReader::takePiece() {
    beginM = pieceEndM;
    for (auto searchFrom = beginM;;) {
        auto const* const found = static_cast<char const*>(
            std::memchr(bufferM.data() + searchFrom, '\n', endM - searchFrom));
        isCompleteM = found != nullptr;
        if (isCompleteM) {
            pieceEndM = static_cast<std::size_t>(found - bufferM.data()) + 1;
            offsetM += pieceEndM - beginM;
            return true;
        }
        auto const searched = endM - beginM;
        if (searched == capacity() || !readMore()) {
            pieceEndM = endM;
            offsetM += searched;
            isCompleteM = isAtEndM;
            return searched > 0;
        }
        searchFrom = beginM + searched;
    }
}

bool LineReader::readMore() {
    if (beginM > 0) {
        std::memmove(bufferM.data(), bufferM.data() + beginM, endM - beginM);
        endM -= beginM;
        beginM = 0;
    }
    auto const room = std::min(capacity() - endM, blockSize);
    auto const count = isAtEndM ? 0 : inputM.read({bufferM.data() + endM, room});
    isAtEndM = count == 0;
    auto const found = std::string_view(bufferM.data() + endM, count).rfind('\n');
    lastLineEndM = found == std::string_view::npos ? 0 : endM + found + 1;
    endM += count;
    return count > 0;
}

} // namespace host
