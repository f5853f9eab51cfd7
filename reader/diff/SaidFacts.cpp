#include "diff/SaidFacts.h"

namespace reader {

namespace {

void append(std::string& list, std::string_view text) {
    list += (list.empty() ? "" : ", ");
    list += text;
}

std::string itemTexts(std::vector<UsedItem> const& items) {
    std::string list;
    for (auto const& item : items) {
        append(list, item.object.text);
        list += ' ';
        list += item.model.text;
    }
    return list;
}

} // namespace

SaidFacts saidFacts(EventFacts const& event) {
    SaidFacts facts;
    Fact const* const plain[] = {&event.serviceId,     &event.serviceType, &event.eventType,
                                 &event.chargingStart, &event.account,     &event.balanceGroup,
                                 &event.ratePlan,      &event.ratePlanId,  &event.ratePlanVersion,
                                 &event.impactCategory};
    std::size_t next = 0;
    for (auto const* const fact : plain) {
        facts[next++] = fact->text;
    }
    for (auto const& code : event.priceModels) {
        append(facts[next], code.text);
    }
    ++next;
    facts[next++] = itemTexts(event.ownDiscounts);
    for (auto const& owner : event.owners) {
        append(facts[next], owner.id.text);
        facts[next] += " (" + itemTexts(owner.items) + ")";
    }
    return facts;
}

} // namespace reader
