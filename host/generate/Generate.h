// Generates a realistic day of EDRs with all that is needed to run them: the registry, the EDR
// description, and the scripts of the reference database and of its data. The same options give the
// same bytes. No EDR or row is rejected.
#pragma once

#include "generate/GenerateOptions.h"

#include <string>

namespace host {

// Returns what was generated and how to run it, for people. Throws a BAS::Status when a file exists
// already or can't be written.
std::string generate(GenerateOptions const& options);

} // namespace host
