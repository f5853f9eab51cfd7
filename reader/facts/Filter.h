// Which events a user wants to see. Patterns may hold "*" (any text) and "?" (one character).
#pragma once

#include "facts/EventFacts.h"

#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

namespace reader {

class FactReader;

bool matchesPattern(std::string_view pattern, std::string_view text);

struct Filter {
    // One of each list's patterns has to match; a list without patterns lets everything through.
    std::vector<std::string> customers;
    std::vector<std::string> services;
    std::vector<std::string> accounts;
    std::vector<std::string> ratePlans;
    std::vector<std::string> priceModels;
    std::vector<std::string> discounts; // object number or model name, own or shared
    std::vector<std::string> owners;    // account or owner number of who shares or sponsors
    std::optional<std::int64_t> since;  // seconds since 1970, of the charging start
    std::optional<std::int64_t> until;  // the first second that is too late
    // What keyOf() says of those that are let through.
    std::optional<std::unordered_set<std::uint64_t>> keys;

    bool letsAllThrough() const;
    // Whether the discounts and owners of an event have to be read for it.
    bool needsDiscounts() const { return !discounts.empty() || !owners.empty(); }
    bool lets(EventFacts const& event) const;
    // Reads no more of the event than it needs.
    bool lets(EventText const& event, FactReader& reader) const;
};

} // namespace reader
