#include "facts/EventFacts.h"

namespace reader {

void HeldMemory::clear() {
    balanceGroups.clear();
    discounts = ObjectList();
    sponsorships = ObjectList();
    discountModels.clear();
}

SectionText const* EventFacts::section(SectionName name) const {
    for (auto const& section : sections) {
        if (section.name == name) {
            return &section;
        }
    }
    return nullptr;
}

} // namespace reader
