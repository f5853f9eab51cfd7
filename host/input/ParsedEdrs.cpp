#include "input/ParsedEdrs.h"

#include <span>

namespace host {

void ParsedEdrs::clear() noexcept {
    edrsM.clear();
    stepsM.clear();
    textM.clear();
}

void ParsedEdrs::begin(std::string_view line) {
    edrsM.push_back({EDR::detailRecord, stepsM.size(), textM.size(), {}});
    textM.append(line);
    lineM = line.data();
}

void ParsedEdrs::addBlock(EDR::BlockIndex const& block) {
    stepsM.push_back({EDR::Index(block.blockKind(), noField), 0, 0});
}

void ParsedEdrs::setField(EDR::Index const& field, std::string_view text) {
    auto const begin = textM.size() - edrsM.back().textBegin;
    textM.append(text);
    stepsM.push_back(
        {field, static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(text.size())});
}

void ParsedEdrs::keepFirst(std::size_t count) {
    if (count < edrsM.size()) {
        textM.resize(edrsM[count].textBegin);
        stepsM.resize(edrsM[count].firstStep);
        edrsM.resize(count);
    }
}

void ParsedEdrs::fill(EDR::Container& container, std::size_t edr) const {
    container.clear(edrsM[edr].kind);
    auto const* const text = textM.data() + edrsM[edr].textBegin;
    auto const begin = edrsM[edr].firstStep;
    auto const end = edr + 1 < edrsM.size() ? edrsM[edr + 1].firstStep : stepsM.size();
    for (auto const& step : std::span(stepsM).subspan(begin, end - begin)) {
        if (step.field.field() == noField) {
            container.addBlock(EDR::BlockIndex(step.field.blockKind()));
        } else {
            container.setField(step.field, {text + step.textBegin, step.textSize});
        }
    }
}

} // namespace host
