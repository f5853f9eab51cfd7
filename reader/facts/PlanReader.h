// Reads the middle of a dump's event: the rate plan that was used with what the rate plan module
// holds, and the price models with what the price module holds. All of it is of the catalogue, so
// many events have it with the same bytes: it is read once and kept, up to a limit.
#pragma once

#include "facts/EventFacts.h"
#include "facts/ObjectReader.h"

#include <memory>
#include <unordered_map>
#include <vector>

namespace reader {

class PlanReader {
public:
    // The object reader stays the caller's.
    explicit PlanReader(ObjectReader& objects);
    ~PlanReader();

    // Reads from the line of the rate plan on, and returns where the next section begins. A text
    // that is open was cut at its end.
    Place read(LinedText const& text, Place begin, LineNumber number, bool isOpen,
               EventFacts& facts);
    // Only the rate plan and the price model codes.
    static void readOverview(LinedText const& text, Place begin, LineNumber number,
                             EventFacts& facts);
    // Forgets what is kept.
    void clear();

private:
    struct Plan;

    ObjectReader& objectsM;
    // By a hash of the first line.
    std::unordered_map<std::uint64_t, std::vector<std::unique_ptr<Plan>>> keptM;
    std::size_t keptBytesM = 0;
    std::unique_ptr<Plan> notKeptM; // of the event
};

} // namespace reader
