// The file in which a host shows its status, replaced whenever it is written. The file that is
// there is locked by the process that wrote it, so that what a host left behind is not taken for
// the status of a running one: the lock goes with the process, however it ends. Reading waits for
// nobody, and no reader keeps the host waiting.
#pragma once

#include "base/TemporaryFile.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace host {

class StatusFile {
public:
    // Throws a BAS::Status when a running host has that file.
    explicit StatusFile(std::filesystem::path file);
    StatusFile(StatusFile const&) = delete;
    StatusFile& operator=(StatusFile const&) = delete;
    // Removes the file.
    ~StatusFile();

    // Throws a BAS::Status when that isn't possible; what was written before stays.
    void write(std::string_view text);

private:
    std::filesystem::path fileM;
    std::unique_ptr<TemporaryFile> thereM; // locked
};

// What a running host wrote there last; nothing when none runs. Throws a BAS::Status when the file
// can't be read.
std::optional<std::string> readStatusFile(std::filesystem::path const& file);

} // namespace host
