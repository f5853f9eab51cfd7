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
    // Of what tells the object from others.
    std::uint64_t key() const;
};

class HeldObjectWalk {
public:
    using Visitor = std::function<void(HeldObject const&)>;

    // An object is valid during its visit: the next one takes its memory.
    void forEach(EventFacts const& event, Visitor const& visit);

private:
    HeldObject& next(std::string_view noun, std::string_view name, LineNumber line);
    void visitAccount(AccountMemory const& memory, Visitor const& visit);
    void visitAskedList(AskedList const& list, std::string_view account, std::string_view noun,
                        std::string_view othersName, Visitor const& visit);
    void visitRatePlan(PlanMemory const& memory, Visitor const& visit);
    void visitObjects(std::vector<ShownObject> const& objects, std::string_view noun,
                      std::string_view aboutName, Visitor const& visit);
    void visitList(ObjectList const& list, std::string_view noun, Visitor const& visit);
    void visitHeld(HeldMemory const& memory, Visitor const& visit);
    void visitForeign(EventFacts const& event, Visitor const& visit);

    HeldObject objectM;
};

} // namespace reader
