// datadump diff.
#pragma once

#include "program/Options.h"

namespace reader {

// What changed from the older file to the newer one, as lines; returns whether anything did, as an
// exit code.
int compareDumps(Options const& options);

} // namespace reader
