// Judges the facts of one event. A finding that only follows from another is left out.
#pragma once

#include "facts/EventFacts.h"
#include "findings/Finding.h"

#include <vector>

namespace reader {

// Appends what doesn't fit in the event, in the order of its text's sections.
void judge(EventFacts const& event, std::vector<Finding>& findings);

} // namespace reader
