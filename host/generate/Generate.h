// Makes a believable day of EDRs with all that is needed to run them: the registry, the EDR
// description, and the scripts of the reference database and of the data that belong to the EDRs.
// The same options make the same bytes. What is made runs without a rejected EDR or row.
#pragma once

#include "generate/GenerateOptions.h"

#include <string>

namespace host {

// Returns what was made and how to run it, for people. Throws a BAS::Status when a file is there
// already or can't be written.
std::string generate(GenerateOptions const& options);

} // namespace host
