// datadump json.
#pragma once

#include "program/Options.h"

namespace reader {

// JSON Lines, one object an event; docs/reading-dumps.md tells its fields.
int writeJson(Options const& options);

} // namespace reader
