// What the command line says.
#pragma once

#include "facts/Filter.h"

namespace reader {

struct Options {
    std::vector<std::string> files;
    Filter filter;
    bool onlyFindings = false;
    // Of html:
    std::string older; // file to compare with; empty: none
    std::string page;  // file to write
};

} // namespace reader
