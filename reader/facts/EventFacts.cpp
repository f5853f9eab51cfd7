#include "facts/EventFacts.h"

#include "text/Hash.h"

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

void EventFacts::addForeignText(SectionName name, std::string_view owner, std::string_view text,
                                LineNumber firstLine) {
    if (text.find_first_not_of(" \n") != std::string_view::npos) {
        foreignTexts.push_back({name, owner, text, firstLine});
    }
}

std::uint64_t keyOf(EventFacts const& event) {
    return hashOf(event.service.text, hashOf(event.customer.text));
}

} // namespace reader
