// Which files a command has written. The host doesn't know what the keys of an object mean, so it
// looks at every path that a value can name before and after the command.
#pragma once

#include "BAS/RegistryEntry.h"
#include "commands/WriteWatch.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace host {

// A file that a key of a command names.
struct NamedFile {
    std::string key;
    std::filesystem::path path; // absolute
    bool isOpened = false;      // for writing, by the command
    std::uint64_t size = 0;     // bytes after the command, of a regular file that was opened
    std::string reason;         // why it wasn't opened, if known
};

class NamedFiles {
public:
    // Watches the files that the keys below the entry name, from now on. The watch must outlive the
    // object.
    NamedFiles(BAS::RegistryEntry const& update, WriteWatch& watch);
    NamedFiles(NamedFiles const&) = delete;
    NamedFiles& operator=(NamedFiles const&) = delete;
    ~NamedFiles();

    // The files that were opened since, and those that weren't although their value has a '/' and
    // so is taken for a path.
    std::vector<NamedFile> report() const;

private:
    // A path that a value can name, with the file that is there before the command.
    struct Candidate {
        std::string key;
        std::filesystem::path path;
        bool looksLikePath = false;
        std::optional<std::uint64_t> inode;
        WriteWatch::Number watched = -1;
    };

    WriteWatch& watchM;
    std::vector<Candidate> candidatesM;
};

} // namespace host
