// Notices that files are opened for writing. One watch serves many commands, since the system takes
// its time to give one up. Used by one thread at a time.
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

    // Watches the file at the path until it is removed from the watch; a negative number when that
    // isn't possible. A file that is watched already has the same number.
    Number add(std::filesystem::path const& path);
    void remove(Number number);

    // The watched files that were written, or closed after they had been opened for writing, since
    // the last call.
    std::set<Number> takeWritten();

private:
    FileDescriptor descriptorM;
};

} // namespace host
