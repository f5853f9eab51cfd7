// Notices what happens to the files of a directory.
#pragma once

#include "base/FileDescriptor.h"

#include <filesystem>

namespace host {

class DirectoryWatch {
public:
    // Throws a BAS::Status when the directory can't be watched.
    explicit DirectoryWatch(std::filesystem::path const& directory);

    // Readable when something came or changed since the last takeChanges.
    int descriptor() const noexcept { return descriptorM.number(); }
    // Whether something came or changed since the last call. List the directory after the call.
    bool takeChanges();

private:
    FileDescriptor descriptorM;
};

} // namespace host
