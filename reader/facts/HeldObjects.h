// What memory holds, object by object, whatever events show it: accounts, rate plans, price models,
// balance groups, discounts. The comparisons of files and of dumps both walk them.
#pragma once

#include "facts/EventFacts.h"

#include <functional>
#include <string>

namespace reader {

// A list of an object. Rows are told apart by their first columns; 0 key columns: by the shortest
// leading columns that are unique.
struct HeldList {
    std::string_view noun; // "step"
    std::size_t keyColumns = 0;
    Table const* table = nullptr;
};

struct HeldFact {
    std::string_view name;
    std::string_view value;
};

// Valid as long as the facts of its event.
struct HeldObject {
    std::string id; // "price model PM_VOICE_BIZ"
    // Of a list that shows only what answers it; objects of two questions aren't compared.
    std::string question;
    LineNumber line = 0;
    std::vector<HeldFact> facts;
    std::vector<HeldList> lists;
    // Lines of modules that nobody here knows.
    std::vector<std::string_view> lines;

    // Of everything but the line.
    std::uint64_t hash() const;
};

void forEachHeldObject(EventFacts const& event,
                       std::function<void(HeldObject const&)> const& visit);

} // namespace reader
