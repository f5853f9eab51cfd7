// Keeps the lines of one input that can't be taken, as they were. The file of an earlier run is
// removed; a new one comes with the first line.
#pragma once

#include "FileDescriptor.h"

#include <filesystem>
#include <string_view>

namespace host {

class RejectFile {
public:
    // Throws a BAS::Status when an old file can't be removed.
    explicit RejectFile(std::filesystem::path file);

    // Throws a BAS::Status when the bytes can't be written.
    void append(std::string_view bytes);

    std::filesystem::path const& path() const noexcept { return fileM; }

private:
    std::filesystem::path fileM;
    FileDescriptor descriptorM;
};

} // namespace host
