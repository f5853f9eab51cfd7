// Keeps the rejected lines of one input, unchanged. The file of an earlier run is removed, or cut
// to its size at the place where this run resumes; a new one is created with the first line.
#pragma once

#include "base/FileDescriptor.h"
#include "registry/Registry.h"

#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string_view>

namespace host {

class RejectFile {
public:
    // Cuts an old file to the given size. Throws a BAS::Status when it can't be removed or cut.
    explicit RejectFile(InputConfiguration const& input, std::uint64_t keptBytes = 0);

    // Throws a BAS::Status when the bytes can't be written.
    void append(std::string_view bytes);

    std::filesystem::path const& path() const noexcept { return fileM; }
    // In bytes.
    std::uint64_t size() const noexcept { return sizeM; }

private:
    void open();
    void allowWhatTheInputAllows() const;

    std::filesystem::path fileM;
    std::optional<struct stat> inputM; // nothing of standard input
    FileDescriptor descriptorM;
    std::uint64_t sizeM = 0;
};

} // namespace host
