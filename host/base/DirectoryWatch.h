// Notices what happens to the files of a directory.
#pragma once

#include "base/FileDescriptor.h"

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <utility>

namespace host {

class DirectoryWatch {
public:
    // Throws a BAS::Status when the directory can't be watched.
    explicit DirectoryWatch(std::filesystem::path const& directory);

    // Readable when something came or changed since the last takeChanges.
    int descriptor() const noexcept { return descriptorM.number(); }
    // Whether something came or changed since the last call. List the directory after the call.
    // Throws a BAS::Status when its path leads to it no longer.
    bool takeChanges();

private:
    using Identity = std::optional<std::pair<dev_t, ino_t>>; // nothing when it isn't there

    static Identity identityOf(std::filesystem::path const& directory);

    std::filesystem::path pathM;
    Identity identityM;
    FileDescriptor descriptorM;
    int parentM = -1; // its number as a watched directory, if it can be watched
};

} // namespace host
