// datadump findings.
#pragma once

#include "findings/FindingKinds.h"
#include "program/Options.h"

namespace reader {

// One line a finding. Returns whether a mismatch was found, as an exit code.
int listFindings(Options const& options);

// Prints what a kind means, or all of them when the name is "all".
int explainKind(std::string const& name);

} // namespace reader
