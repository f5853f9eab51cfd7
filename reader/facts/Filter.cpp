#include "facts/Filter.h"

#include "facts/FactReader.h"
#include "facts/Times.h"

namespace reader {

namespace {

using Patterns = std::vector<std::string>;

bool anyMatches(Patterns const& patterns, std::string_view text) {
    return std::any_of(patterns.begin(), patterns.end(),
                       [&](auto const& pattern) { return matchesPattern(pattern, text); });
}

bool lets(Patterns const& patterns, Fact const& fact) {
    return patterns.empty() || (fact.isTold() && anyMatches(patterns, fact.text));
}

template <class Items, class Texts>
bool letsOneOf(Patterns const& patterns, Items const& items, Texts textsOf) {
    return patterns.empty() || std::any_of(items.begin(), items.end(), [&](auto const& item) {
               auto const texts = textsOf(item);
               return anyMatches(patterns, texts[0]) || anyMatches(patterns, texts[1]);
           });
}

std::array<std::string_view, 2> textsOfItem(UsedItem const& item) {
    return {item.object.text, item.model.text};
}

} // namespace

bool matchesPattern(std::string_view pattern, std::string_view text) {
    std::size_t p = 0;
    std::size_t t = 0;
    std::size_t star = std::string_view::npos;
    std::size_t starText = 0;
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            starText = t;
        } else if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == text[t])) {
            ++p;
            ++t;
        } else if (star != std::string_view::npos) {
            p = star + 1;
            t = ++starText;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', p) == std::string_view::npos;
}

bool Filter::letsAllThrough() const {
    return customers.empty() && services.empty() && accounts.empty() && ratePlans.empty() &&
           priceModels.empty() && discounts.empty() && owners.empty() && !since && !until && !keys;
}

bool Filter::lets(EventFacts const& event) const {
    if (since || until) {
        auto const start = chargingSeconds(event.chargingStart.text);
        if (!start || (since && *start < *since) || (until && *start >= *until)) {
            return false;
        }
    }
    auto const codes = [](Fact const& code) { return std::array{code.text, code.text}; };
    auto const ownerTexts = [](SharingOwner const& owner) {
        return std::array{owner.account.text, owner.id.text};
    };
    bool const letsDiscount =
        discounts.empty() || letsOneOf(discounts, event.ownDiscounts, textsOfItem) ||
        std::any_of(event.owners.begin(), event.owners.end(), [&](auto const& owner) {
            return letsOneOf(discounts, owner.items, textsOfItem);
        });
    return reader::lets(customers, event.customer) && reader::lets(services, event.service) &&
           reader::lets(accounts, event.account) && reader::lets(ratePlans, event.ratePlan) &&
           letsOneOf(priceModels, event.priceModels, codes) && letsDiscount &&
           letsOneOf(owners, event.owners, ownerTexts) && (!keys || keys->contains(keyOf(event)));
}

bool Filter::lets(EventText const& event, FactReader& reader) const {
    return letsAllThrough() ||
           lets(needsDiscounts() ? reader.read(event) : reader.readOverview(event));
}

} // namespace reader
