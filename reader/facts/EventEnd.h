// Whether the text of an event goes to its end.
#pragma once

#include "text/EventReader.h"

namespace reader {

// A dump ends every event with two line ends of its own, a report with a ruler. What was cut
// between two events can't be known.
bool isCut(TextKind kind, LinedText const& text);

} // namespace reader
