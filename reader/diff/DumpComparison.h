// Compares two dumps by keys, blind to order and number: what memory holds object by object, then
// what the events themselves say. Each dump is read for hashes first; then only the events that
// tell what a difference is are read again.
#pragma once

#include "diff/ObjectChanges.h"
#include "diff/SaidFacts.h"
#include "facts/FactReader.h"
#include "facts/Filter.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace reader {

struct DumpChanges {
    struct OfObject {
        Change change;
        std::uint64_t events; // of the newer dump that show the object
    };
    struct OfEvent {
        std::string event; // its key
        std::string text;
    };
    // How many events have a fact that was something else, by what it was and is.
    using Values = std::map<std::string, std::uint64_t>;

    std::vector<OfObject> objects; // in the order of the newer dump
    std::vector<OfEvent> byEvent;
    std::array<Values, saidFactNames.size()> said; // but charging starts
    std::uint64_t chargingStarts = 0;              // how many events have another one
    std::string chargingStart;                     // one of them
    std::vector<std::string> gone;                 // keys of events
    std::vector<std::string> came;
};

class DumpComparison {
public:
    enum Side : std::size_t { older, newer };
    // Calls the visitor with all events of a side. It is called twice at most for each.
    using Visitor = std::function<void(EventText const&)>;
    using Source = std::function<void(Side, Visitor const&)>;

    // Lists the changes of memory by event too when asked for. The filter stays the caller's.
    DumpComparison(Source source, Filter const& filter, bool isByEvent)
        : sourceM(std::move(source)), filterM(filter), isByEventM(isByEvent) {}

    DumpChanges run();

private:
    static constexpr std::size_t never = static_cast<std::size_t>(-1);
    using SaidHashes = std::array<std::uint64_t, saidFactNames.size()>;

    // On one side; events are counted from 0.
    struct ShownObject {
        std::uint64_t hash = 0;
        std::size_t firstEvent = never;
    };
    struct ComparedObject {
        std::array<ShownObject, 2> sides;
        std::uint64_t events = 0; // of the newer dump
        // The last event of the newer dump that was counted, and that was listed: one that was
        // charged by a price model twice shows it twice.
        std::size_t countedEvent = never;
        std::size_t listedEvent = never;
        std::unique_ptr<KeptObject> before;
        std::vector<Change> changes;

        bool differs() const;
    };
    struct ShownEvent {
        SaidHashes hashes{};
        std::size_t number = never;
    };
    struct ComparedEvent {
        std::array<ShownEvent, 2> sides;
        std::unique_ptr<SaidFacts> before;
    };

    void addHashes(EventFacts const& event, Side side, std::size_t number);
    void chooseEvents();
    static bool differsBesidesStart(SaidHashes was, SaidHashes const& is);
    void readAgain(ComparedEvent const& event);
    void forEachReadAgain(Side side,
                          std::function<void(EventFacts const&, std::size_t)> const& visit);
    void keepOlder(EventFacts const& event, std::size_t number);
    void compareNewer(EventFacts const& event, std::size_t number);
    void compareSaid(SaidFacts const& was, SaidFacts const& is);

    Source sourceM;
    Filter const& filterM;
    bool isByEventM;
    FactReader readerM;
    HeldObjectWalk walkM;
    std::unordered_map<std::uint64_t, ComparedObject> objectsM;
    std::unordered_map<std::uint64_t, ComparedEvent> eventsM;
    std::array<std::vector<bool>, 2> isReadAgainM; // by the number of the event
    DumpChanges changesM;
};

} // namespace reader
