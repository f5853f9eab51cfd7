// Notices that files are opened for writing. One watch serves many commands, since closing one is
// slow. Used by one thread at a time.
#pragma once

#include "base/FileDescriptor.h"

#include <filesystem>
#include <set>

namespace host {

class WriteWatch {
public:
    using Number = int;

    // Throws a BAS::Status when the system has no watch left.
    WriteWatch();

    // Watches the file until it is removed from the watch; returns a negative number when that
    // isn't possible, and the same number for a file that is already watched.
    Number add(std::filesystem::path const& path);
    void remove(Number number);

    // The watched files that were written, or closed after they had been opened for writing, since
    // the last call.
    std::set<Number> takeWritten();

private:
    FileDescriptor descriptorM;
};

} // namespace host
