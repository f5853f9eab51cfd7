// What the sentences and lists of the account and rate plan modules say, read by a small table of
// patterns. What other modules write is left as it is.
#pragma once

#include "facts/EventFacts.h"
#include "facts/UnplacedLines.h"

namespace reader {

// The texts stay the caller's; what is read points into them. Lines of the plug-in are unplaced,
// and those of a known module that it does not write.
void readAccountText(ModuleText const& text, AccountMemory& memory, UnplacedLines& unplaced);
void readRatePlanText(ModuleText const& text, PlanMemory& memory, UnplacedLines& unplaced);

} // namespace reader
