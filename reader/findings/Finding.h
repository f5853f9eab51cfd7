// One thing of an event that doesn't fit.
#pragma once

#include "findings/FindingKinds.h"
#include "text/Lines.h"

#include <string>

namespace reader {

struct Finding {
    Kind kind = Kind::unplaced;
    LineNumber line = 0;
    std::string subject;  // "product 7030 of rate plan VOICE_STD"
    std::string says;     // what the event says; may be empty
    std::string holds;    // what memory holds; may be empty
    std::string relation; // "ended 20 days before the charging start"; may be empty
};

// Subject, both sides and relation in one sentence, with their texts as they stand.
std::string sentenceOf(Finding const& finding);

} // namespace reader
