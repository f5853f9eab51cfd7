// A directory into which others put files for this process. A file is complete when its name
// doesn't begin with '.' and doesn't end in ".tmp" or ".part", so writers rename it when it is
// done. Only regular files count.
#pragma once

#include "base/DirectoryWatch.h"
#include "base/FileDescriptor.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace host {

// The names of the complete files of a directory that end in the suffix, in the order of their
// bytes. Throws a BAS::Status when the directory can't be read.
std::vector<std::string> completeFiles(std::filesystem::path const& directory,
                                       std::string_view suffix = {});

// Whether anything is there, even a link that leads nowhere.
bool hasEntry(std::filesystem::path const& path);

class DropDirectory {
public:
    enum class Lock {
        held,     // keeps other processes away for the lifetime of the object
        elsewhere // of another directory; whoever may read a directory could hold its lock
    };

    // Throws a BAS::Status when the path isn't a directory in which this process can read and
    // write.
    static void requireUsable(std::filesystem::path const& directory);

    // Throws a BAS::Status when the directory can't be used, or another process has it.
    explicit DropDirectory(std::filesystem::path directory, Lock lock = Lock::held);

    std::filesystem::path const& path() const noexcept { return pathM; }
    DirectoryWatch& changes() noexcept { return changesM; }
    DirectoryWatch const& changes() const noexcept { return changesM; }

    std::vector<std::string> completeFiles(std::string_view suffix = {}) const {
        return host::completeFiles(pathM, suffix);
    }
    // Likewise those that only look like files: links, FIFOs and the like, not directories.
    std::vector<std::string> strangeEntries(std::string_view suffix = {}) const;

private:
    std::filesystem::path pathM;
    FileDescriptor lockM;
    DirectoryWatch changesM;
};

} // namespace host
