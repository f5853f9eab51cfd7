#include "facts/PlugInItems.h"

namespace reader {

bool readOwnerRow(std::string_view line, LineNumber number, std::deque<SharingOwner>& owners) {
    if (line == ownerHeading) {
        owners.emplace_back();
        return true;
    }
    if (owners.empty()) {
        return false;
    }
    auto& owner = owners.back();
    Fact* const rows[] = {&owner.account, &owner.id, &owner.type, &owner.balanceGroup};
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        if (!rows[i]->isTold() && line.starts_with(ownerRowLabels[i])) {
            *rows[i] = {line.substr(ownerRowLabels[i].size()), number};
            return true;
        }
    }
    return false;
}

bool readItemLine(std::string_view line, LineNumber number, ItemLabels const& labels,
                  std::vector<UsedItem>& items) {
    if (line.starts_with(labels.object)) {
        items.push_back({{line.substr(labels.object.size()), number}, {}});
        return true;
    }
    if (line.starts_with(labels.model) && !items.empty() && !items.back().model.isTold()) {
        items.back().model = {line.substr(labels.model.size()), number};
        return true;
    }
    return false;
}

void splitCodes(std::string_view codes, LineNumber line, EventFacts& facts) {
    facts.codes = {codes, line};
    while (!codes.empty()) {
        auto const gap = codes.find(codesGap);
        facts.priceModels.push_back({codes.substr(0, gap), line});
        codes.remove_prefix(gap == std::string_view::npos ? codes.size() : gap + codesGap.size());
    }
}

} // namespace reader
