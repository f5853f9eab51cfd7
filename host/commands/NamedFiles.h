// Which files a command has written by itself. The host doesn't know what the keys of an object
// mean, so it looks at every path that a value can name before and after the command.
#pragma once

#include "commands/WriteWatch.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace host {

enum class Completeness { unknown, whole, cut };

// A file that a key of a command names.
struct NamedFile {
    std::string key;
    std::filesystem::path path; // absolute
    bool isOpened = false;      // for writing, by the command
    std::uint64_t size = 0;     // bytes that were written to it
    Completeness completeness = Completeness::unknown;
    std::string reason;     // why it wasn't opened or isn't whole, if known
    bool hasFailed = false; // it is known not to be what the sender asked for
};

// A value as the object sees it.
struct PlainValue {
    std::string key;
    std::string text;
};

// Why the object shouldn't open the path: whoever opens it would wait, or harm it; nothing when it
// is a regular file, a terminal or the like, one of this process's standard descriptors, or
// nothing.
std::optional<std::string> openingObstacle(std::filesystem::path const& path);

class NamedFiles {
public:
    // Watches the files that the values name, from now on. The watch must outlive the object.
    NamedFiles(std::vector<PlainValue> const& values, WriteWatch& watch);
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

    NamedFile resultOf(Candidate const& candidate, bool isOpened) const;

    WriteWatch& watchM;
    std::vector<Candidate> candidatesM;
};

} // namespace host
