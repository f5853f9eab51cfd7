// Keeps the rejected lines of one input, unchanged. The file of an earlier run is removed, or cut
// to its size at the place where this run resumes; a new one is created with the first line.
#pragma once

#include "base/FileDescriptor.h"

#include <cstdint>
#include <filesystem>
#include <string_view>

namespace host {

class RejectFile {
public:
    // Cuts an old file to the given size. Throws a BAS::Status when it can't be removed or cut.
    explicit RejectFile(std::filesystem::path file, std::uint64_t keptBytes = 0);

    // Throws a BAS::Status when the bytes can't be written.
    void append(std::string_view bytes);

    std::filesystem::path const& path() const noexcept { return fileM; }
    // In bytes.
    std::uint64_t size() const noexcept { return sizeM; }

private:
    std::filesystem::path fileM;
    FileDescriptor descriptorM;
    std::uint64_t sizeM = 0;
};

} // namespace host
