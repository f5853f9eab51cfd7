// datadump list and datadump show.
#pragma once

#include "program/Options.h"

namespace reader {

// One line an event. On a terminal in columns, elsewhere with tabs between the values.
int listEvents(Options const& options);

// The events that the filters let through, byte for byte; without filters the files as they are.
int showEvents(Options const& options);

} // namespace reader
