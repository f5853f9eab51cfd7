// What the command line says.
#pragma once

#include "facts/Filter.h"
#include "findings/FindingKinds.h"

namespace reader {

struct Options {
    std::vector<std::string> files; // of all commands but diff
    // Where the files are read from: one path a file, or none when their names are the paths.
    std::vector<std::string> paths;
    Filter filter;
    bool onlyFindings = false;
    std::string older; // of diff, and of html, where it may be empty: the file to compare with
    std::string newer; // of diff
    std::string page;  // of html: the file to write
    Severity leastSeverity = Severity::note;
    std::array<bool, findingKinds.size()> isIgnored{};
    std::string explained; // a kind's name, or "all"
    bool hasRawText = false;
    bool isByEvent = false;
};

} // namespace reader
