// What an event says by itself, fact by fact, for the comparison of two dumps.
#pragma once

#include "facts/EventFacts.h"

#include <array>
#include <string>

namespace reader {

inline constexpr std::array<std::string_view, 13> saidFactNames = {
    "service id",    "service type",  "event type",    "charging start",    "account",
    "balance group", "rate plan",     "rate plan id",  "rate plan version", "impact category",
    "price models",  "own discounts", "sharing owners"};
// Live traffic changes it in nearly all events: it is only counted.
inline constexpr std::size_t chargingStartFact = 3;

using SaidFacts = std::array<std::string, saidFactNames.size()>;

SaidFacts saidFacts(EventFacts const& event);
// A hash of each fact, without making its text.
std::array<std::uint64_t, saidFactNames.size()> saidFactHashes(EventFacts const& event);

} // namespace reader
