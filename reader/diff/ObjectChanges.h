// What changed in one object of memory between two dumps, blind to order and number.
#pragma once

#include "facts/HeldObjects.h"

#include <map>
#include <string>
#include <vector>

namespace reader {

// The facts of a HeldObject, kept beyond its event.
struct KeptObject {
    struct List {
        std::string noun;
        std::size_t keyColumns = 0;
        std::vector<std::string> headings;
        std::vector<std::vector<std::string>> rows;
    };

    explicit KeptObject(HeldObject const& object);

    std::string id;
    std::string question;
    std::vector<std::pair<std::string, std::string>> facts;
    std::vector<List> lists;
    std::vector<std::string> lines;
};

struct Change {
    std::string text; // "price model PM_VOICE_BIZ step 1: Amount 0.0600 → 0.0750"
    // What many changes may have in common, "balance group sub-balance: gone"; empty: never folded.
    std::string alike;
};

std::vector<Change> changesBetween(KeptObject const& older, KeptObject const& newer);

} // namespace reader
