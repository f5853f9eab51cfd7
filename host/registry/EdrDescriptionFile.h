// The file that describes the fields and blocks of the EDRs of a pipeline.
#pragma once

#include "EDR/Description.h"

#include <filesystem>

namespace host {

// The member of an EDR line with the record's kind; no field of the top block can have this name.
inline constexpr char const* recordMember = "RECORD";

// Throws a StartFailure with all problems of the file and their places, or a BAS::Status when it
// can't be read.
EDR::Description readEdrDescription(std::filesystem::path const& file);

} // namespace host
