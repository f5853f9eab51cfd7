// How a module is named in messages and look-ups.
#pragma once

#include "BAS/String.h"

namespace PBC {

// The module reference for the registry name of a module's directory: its last part, the name that
// the operator gave the module ("DataDump" for "host.Pipelines.Main.Functions.DataDump").
BAS::String ModuleReference(BAS::String const& directory);

} // namespace PBC
