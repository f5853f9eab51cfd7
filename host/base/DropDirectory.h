// A directory into which others put files for this process, which locks it for the lifetime of the
// object. A file is complete when its name doesn't begin with '.' and doesn't end in ".tmp" or
// ".part", so writers rename it when it is done. Only regular files count.
#pragma once

#include "base/DirectoryWatch.h"
#include "base/FileDescriptor.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace host {

class DropDirectory {
public:
    // Throws a BAS::Status when the path isn't a directory in which this process can read and
    // write.
    static void requireUsable(std::filesystem::path const& directory);

    // Throws a BAS::Status when the directory can't be used, or another process has it.
    explicit DropDirectory(std::filesystem::path directory);

    std::filesystem::path const& path() const noexcept { return pathM; }
    DirectoryWatch& changes() noexcept { return changesM; }
    DirectoryWatch const& changes() const noexcept { return changesM; }

    // The names of the complete files that end in the suffix, in the order of their bytes. Throws a
    // BAS::Status when the directory can't be read.
    std::vector<std::string> completeFiles(std::string_view suffix = {}) const;
    // Likewise those that only look like files: links, FIFOs and the like, not directories.
    std::vector<std::string> strangeEntries(std::string_view suffix = {}) const;

private:
    std::vector<std::string> entries(std::string_view suffix,
                                     bool (*isWanted)(std::filesystem::file_type)) const;

    std::filesystem::path pathM;
    FileDescriptor lockM;
    DirectoryWatch changesM;
};

} // namespace host
