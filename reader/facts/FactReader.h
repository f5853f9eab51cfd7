// Reads the facts of events, section by section. What is of the catalogue stands in many events
// with the same bytes: it is taken apart once and kept, up to a limit.
#pragma once

#include "facts/EventFacts.h"

#include <memory>

namespace reader {

class FactReader {
public:
    FactReader();
    ~FactReader();
    FactReader(FactReader const&) = delete;
    FactReader& operator=(FactReader const&) = delete;

    // What a list of events shows: key, rows, rate plan and price model codes. Valid until the next
    // call, as is what read() returns.
    EventFacts const& readOverview(EventText const& event);
    EventFacts const& read(EventText const& event);

private:
    struct Kept;
    class Reading;
    std::unique_ptr<Kept> keptM;
    EventFacts factsM;
};

} // namespace reader
