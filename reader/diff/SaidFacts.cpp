#include "diff/SaidFacts.h"

#include "text/Hash.h"

#include <fmt/format.h>

namespace reader {

namespace {

constexpr Fact EventFacts::*plainFacts[] = {
    &EventFacts::serviceId,     &EventFacts::serviceType, &EventFacts::eventType,
    &EventFacts::chargingStart, &EventFacts::account,     &EventFacts::balanceGroup,
    &EventFacts::ratePlan,      &EventFacts::ratePlanId,  &EventFacts::ratePlanVersion,
    &EventFacts::impactCategory};
// After the plain ones.
enum ListFact : std::size_t {
    priceModels = std::size(plainFacts),
    ownDiscounts,
    sharingOwners,
    factCount
};
static_assert(factCount == saidFactNames.size());

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

std::uint64_t itemsHash(std::vector<UsedItem> const& items, std::uint64_t hash) {
    for (auto const& item : items) {
        hash = hashOf(item.model.text, hashOf(item.object.text, hash));
    }
    return mixed(hash, items.size());
}

} // namespace

SaidFacts saidFacts(EventFacts const& event) {
    SaidFacts facts;
    for (std::size_t i = 0; i < std::size(plainFacts); ++i) {
        facts[i] = (event.*plainFacts[i]).text;
    }
    for (auto const& code : event.priceModels) {
        append(facts[priceModels], code.text);
    }
    facts[ownDiscounts] = itemTexts(event.ownDiscounts);
    for (auto const& owner : event.owners) {
        append(facts[sharingOwners], fmt::format("{} {}, account {}, balance group {} ({})",
                                                 owner.type.text, owner.id.text, owner.account.text,
                                                 owner.balanceGroup.text, itemTexts(owner.items)));
    }
    return facts;
}

std::array<std::uint64_t, saidFactNames.size()> saidFactHashes(EventFacts const& event) {
    std::array<std::uint64_t, saidFactNames.size()> hashes{};
    for (std::size_t i = 0; i < std::size(plainFacts); ++i) {
        hashes[i] = hashOf((event.*plainFacts[i]).text);
    }
    for (auto const& code : event.priceModels) {
        hashes[priceModels] = hashOf(code.text, hashes[priceModels]);
    }
    hashes[ownDiscounts] = itemsHash(event.ownDiscounts, 0);
    for (auto const& owner : event.owners) {
        for (auto const* const fact :
             {&owner.type, &owner.id, &owner.account, &owner.balanceGroup}) {
            hashes[sharingOwners] = hashOf(fact->text, hashes[sharingOwners]);
        }
        hashes[sharingOwners] = itemsHash(owner.items, hashes[sharingOwners]);
    }
    return hashes;
}

} // namespace reader
