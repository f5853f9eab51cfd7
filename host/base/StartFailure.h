// Thrown when the host can't start: everything that is wrong, in the order in which it is to be
// read. Never empty.
#pragma once

#include "BAS/Status.h"

#include <vector>

namespace host {

struct StartFailure {
    std::vector<BAS::Status> problems;
};

} // namespace host
