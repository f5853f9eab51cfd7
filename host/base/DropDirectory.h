// Directories into which others put files for this program. A file is complete when it is renamed
// to a name that doesn't begin with '.' and doesn't end in ".tmp" or ".part"; files of such names
// and everything that is no regular file are left alone.
#pragma once

#include "base/FileDescriptor.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace host {

class DirectoryWatch {
public:
    // Throws a BAS::Status when the directory can't be watched.
    explicit DirectoryWatch(std::filesystem::path const& directory);

    // Readable when something came or changed since the last takeChanges.
    int descriptor() const noexcept { return descriptorM.number(); }
    // Whether something came or changed since the last call. Files that are listed after a call are
    // not missed by the next.
    bool takeChanges();

private:
    FileDescriptor descriptorM;
};

// The names of the complete files that end in the suffix, in the order of their bytes. Throws a
// BAS::Status when the directory can't be read.
std::vector<std::string> completeFiles(std::filesystem::path const& directory,
                                       std::string_view suffix = {});

// Throws a BAS::Status when the path is no directory in which this process can read and write.
void requireUsableDirectory(std::filesystem::path const& directory);

// Keeps other hosts away from a directory as long as the descriptor is open. Throws a BAS::Status
// when another one has it.
FileDescriptor lockDirectory(std::filesystem::path const& directory);

} // namespace host
