#include "input/ParsedEdrs.h"

#include <algorithm>
#include <functional>
#include <span>

namespace host {

void ParsedEdrs::clear() noexcept {
    edrsM.clear();
    stepsM.clear();
    linesEndM = 0;
    ownTextsM.clear();
}

std::span<char> ParsedEdrs::makeRoom(std::size_t size) {
    linesM.resize(std::max(linesM.size(), linesEndM + size));
    auto* const begin = linesM.data() + linesEndM;
    linesEndM += size;
    return {begin, size};
}

void ParsedEdrs::begin(std::string_view line) {
    auto const lines = std::span(linesM).first(linesEndM);
    bool const isInRoom = std::less_equal<>()(lines.data(), line.data()) &&
                          std::less<>()(line.data(), lines.data() + lines.size());
    auto const lineBegin =
        isInRoom ? static_cast<std::size_t>(line.data() - lines.data()) : linesEndM;
    edrsM.push_back({EDR::detailRecord, stepsM.size(), lineBegin, ownTextsM.size(), {}});
    if (!isInRoom) {
        std::ranges::copy(line, makeRoom(line.size()).begin());
    }
    lineM = line.data();
}

void ParsedEdrs::addBlock(EDR::BlockIndex const& block) {
    stepsM.push_back({EDR::Index(block.blockKind(), noField), 0, 0});
}

void ParsedEdrs::setField(EDR::Index const& field, std::string_view text) {
    auto const begin = ownTextsM.size() - edrsM.back().ownTextsBegin;
    ownTextsM.append(text);
    stepsM.push_back({field, static_cast<std::uint32_t>(begin) | ownText,
                      static_cast<std::uint32_t>(text.size())});
}

void ParsedEdrs::keepFirst(std::size_t count) {
    if (count < edrsM.size()) {
        ownTextsM.resize(edrsM[count].ownTextsBegin);
        stepsM.resize(edrsM[count].firstStep);
        edrsM.resize(count);
    }
}

void ParsedEdrs::fill(EDR::Container& container, std::size_t edr) const {
    container.clear(edrsM[edr].kind);
    auto const* const line = linesM.data() + edrsM[edr].lineBegin;
    auto const* const ownTexts = ownTextsM.data() + edrsM[edr].ownTextsBegin;
    auto const begin = edrsM[edr].firstStep;
    auto const end = edr + 1 < edrsM.size() ? edrsM[edr + 1].firstStep : stepsM.size();
    for (auto const& step : std::span(stepsM).subspan(begin, end - begin)) {
        if (step.field.field() == noField) {
            container.addBlock(EDR::BlockIndex(step.field.blockKind()));
        } else {
            auto const* const text = (step.textBegin & ownText) == 0
                                         ? line + step.textBegin
                                         : ownTexts + (step.textBegin & ~ownText);
            container.setField(step.field, {text, step.textSize});
        }
    }
}

} // namespace host
