// Reads and judges the events of all files that the options choose.
#pragma once

#include "facts/FactReader.h"
#include "findings/Judge.h"
#include "program/Options.h"
#include "program/Walk.h"

#include <functional>

namespace reader {

// Valid during the visit.
struct JudgedEvent {
    EventFacts const& event;
    std::vector<Finding> const& findings; // that the options don't leave out
    std::string const& file;
    std::size_t fileNumber;
};

// Calls the visitor with the events that the filters let through. Tells of keys in two files.
// Throws an InputError.
void forEachJudged(Options const& options, std::function<void(JudgedEvent const&)> const& visit,
                   Walk::Notices notices = Walk::Notices::printed);

} // namespace reader
