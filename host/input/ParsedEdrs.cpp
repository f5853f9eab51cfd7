#include "input/ParsedEdrs.h"

namespace host {

void ParsedEdrs::clear() noexcept {
    edrsM.clear();
    stepsM.clear();
    textM.clear();
}

void ParsedEdrs::begin(std::string_view line) {
    edrsM.push_back({EDR::detailRecord, stepsM.size(), textM.size(), {}});
    textM.append(line);
    lineM = line;
}

void ParsedEdrs::addBlock(EDR::BlockIndex const& block) {
    stepsM.push_back({block.blockKind(), noField, 0, 0});
}

void ParsedEdrs::drop() {
    textM.resize(edrsM.back().textBegin);
    stepsM.resize(edrsM.back().firstStep);
    edrsM.pop_back();
}

void ParsedEdrs::fill(EDR::Container& container, std::size_t edr) const {
    container.clear(edrsM[edr].kind);
    auto const end = edr + 1 < edrsM.size() ? edrsM[edr + 1].firstStep : stepsM.size();
    for (auto i = edrsM[edr].firstStep; i < end; ++i) {
        auto const& step = stepsM[i];
        if (step.field == noField) {
            container.addBlock(EDR::BlockIndex(step.blockKind));
        } else {
            container.setField(EDR::Index(step.blockKind, step.field),
                               {textM.data() + step.textBegin, step.textSize});
        }
    }
}

} // namespace host
