// Keeps the lines of one input that can't be taken, as they were. The file of an earlier run is
// removed, or cut to what it held at the place where this run goes on; a new one comes with the
// first line.
#pragma once

#include "base/FileDescriptor.h"

#include <cstdint>
#include <filesystem>
#include <string_view>

namespace host {

class RejectFile {
public:
    // Of an old file so many bytes are kept. Throws a BAS::Status when the old file can't be
    // removed or cut.
    explicit RejectFile(std::filesystem::path file, std::uint64_t keptBytes = 0);

    // Throws a BAS::Status when the bytes can't be written.
    void append(std::string_view bytes);

    std::filesystem::path const& path() const noexcept { return fileM; }
    // How many bytes the file holds.
    std::uint64_t size() const noexcept { return sizeM; }

private:
    std::filesystem::path fileM;
    FileDescriptor descriptorM;
    std::uint64_t sizeM = 0;
};

} // namespace host
