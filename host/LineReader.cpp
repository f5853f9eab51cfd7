#include "LineReader.h"

#include <algorithm>
#include <cstring>

namespace host {

namespace {

constexpr std::size_t leastCapacity = std::size_t{64} * 1024;
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
    if (endM == capacity()) {
        std::memmove(bufferM.data(), bufferM.data() + beginM, endM - beginM);
        endM -= beginM;
        beginM = 0;
    }
    auto const count = isAtEndM ? 0 : inputM.read({bufferM.data() + endM, capacity() - endM});
    isAtEndM = count == 0;
    endM += count;
    return count > 0;
}

} // namespace host
