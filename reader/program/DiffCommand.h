// datadump diff.
#pragma once

#include "program/Options.h"

namespace reader {

// What changed from the first file of the options to the second, as lines; returns whether anything
// did, as an exit code.
int compareDumps(Options const& options);

} // namespace reader
