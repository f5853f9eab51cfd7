// What the command line says.
#pragma once

#include "facts/Filter.h"

namespace reader {

struct Options {
    std::vector<std::string> files;
    Filter filter;
    bool onlyFindings = false;
};

} // namespace reader
