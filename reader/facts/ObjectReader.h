// Reads what the price, balance and discount modules write: how many objects were asked for, then
// each object or its absence. Objects of the catalogue (price models, discount models) stand in
// many events with the same bytes: their texts are taken apart once and kept, up to a limit.
#pragma once

#include "facts/EventFacts.h"
#include "facts/UnplacedLines.h"

#include <deque>
#include <memory>
#include <string>
#include <unordered_map>

namespace reader {

class ObjectReader {
public:
    // Where the objects of a section go: price models, or those of balance and discount modules.
    struct Target {
        std::vector<ShownObject>* priceModels = nullptr;
        Fact* priceModelsAsked = nullptr;
        HeldMemory* memory = nullptr;
    };

    // Frees what was read of the event before; what is kept stays.
    void beginEvent();
    // Frees what is kept, too, when it is too much. Returns whether it did.
    bool limitKept();
    // Of all lists of the events.
    TableLayouts& layouts() { return layoutsM; }

    // Returns whether anything was said to be asked for. A text that is open was cut at its end.
    bool read(LinedText const& text, LineNumber number, bool isOpen, Target const& target,
              UnplacedLines& unplaced);

private:
    enum Asked : std::uint8_t { prices, groups, discounts, sponsorships, models, nothing };
    struct AskedNoun {
        std::string_view noun;
        std::string_view begin;                 // of an object's first line
        std::array<std::string_view, 2> titles; // what the titles of its lists begin with
    };
    static AskedNoun const askedNouns[nothing];

    struct KeptObject {
        std::string text;
        std::size_t lines = 0;
        MemoryObject object;
    };

    static Asked askedIn(std::string_view line, std::string_view& count);
    void fill(MemoryObject& object, LinedText const& text, Asked kind, bool isOpen);
    static std::vector<ShownObject>& objectsOf(Asked kind, Target const& target);
    static bool isTitle(std::string_view line, Asked kind);
    Place readObject(LinedText const& text, Place begin, LineNumber number, Asked kind, bool isOpen,
                     Target const& target);
    KeptObject const* knownObject(std::string_view text, std::string_view firstLine,
                                  Asked kind) const;
    MemoryObject const& takeApart(LinedText const& text, Asked kind, bool isOpen);
    void readList(LinedText const& text, LineNumber number, bool isOpen, Asked kind,
                  HeldMemory& memory, UnplacedLines& unplaced);
    MemoryObject& freeObject();

    TableLayouts layoutsM;
    // By a hash of its text (or one that follows from it), and the last one by a hash of its first
    // line.
    std::unordered_map<std::uint64_t, std::unique_ptr<KeptObject>> keptM;
    std::unordered_map<std::uint64_t, KeptObject const*> byFirstLineM;
    std::size_t keptBytesM = 0;
    // Of the event; their memory is used again.
    std::deque<MemoryObject> objectsM;
    std::size_t usedObjectsM = 0;
    std::deque<ModuleText> listsM;
    std::size_t usedListsM = 0;
};

} // namespace reader
