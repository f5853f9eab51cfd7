// A file in the making. It lies in the directory of its target, readable for owner and group only,
// and takes the target's place once it is whole, so that nobody ever sees a part of it. No link is
// followed, and nothing that is there is opened. Goes with the object unless it has taken its
// place.
//
// Until then it has no name, so that it goes with the process too, however that ends; only for the
// moment of taking its place it has a random hidden one. Where the file system has no files without
// a name, it has that one from the beginning, and stays when the process is killed.
#pragma once

#include "base/FileDescriptor.h"

#include <sys/types.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <string_view>

namespace host {

class TemporaryFile {
public:
    // Throws a BAS::Status when the file can't be made.
    explicit TemporaryFile(std::filesystem::path const& target);
    // The directory is the target's, open for lookups.
    TemporaryFile(FileDescriptor directory, std::filesystem::path target);
    TemporaryFile(TemporaryFile const&) = delete;
    TemporaryFile& operator=(TemporaryFile const&) = delete;
    ~TemporaryFile() { remove(); }

    std::filesystem::path const& target() const noexcept { return targetM; }
    int descriptor() const noexcept { return fileM.number(); }

    // Both throw a BAS::Status when that isn't possible.
    void setOwner(uid_t owner, gid_t group);
    void write(std::string_view bytes);

    // Flushes everything to the disk. Throws a BAS::Status when that isn't possible.
    void flush();
    // Takes the target's place; throws likewise.
    void takePlace();

    // Any thread, also while the file is written.
    void remove() noexcept;

private:
    std::filesystem::path targetM;
    FileDescriptor directoryM;
    std::string nameM;
    FileDescriptor fileM;
    bool isFlushedM = false;
    std::atomic<bool> isNamedM{false};
    std::atomic<bool> isInPlaceM{false};
};

} // namespace host
