// Chooses events of an older and a newer file by key: what a filter looks at may be what changed.
#pragma once

#include "facts/Filter.h"
#include "program/RereadableFile.h"

#include <vector>

namespace reader {

// A filter by the keys of all events that the filter lets through in one of the files at least.
// Reads the files, unless it lets everything through. Throws an InputError.
Filter chosenInAny(Filter const& filter, std::vector<RereadableFile> const& files);

} // namespace reader
