// The file in which a host shows its status, replaced whenever it is written. From its start on,
// the file that is there is locked by the host, so that no other one takes it, and that what a host
// left behind is not taken for the status of a running one: the locks go with the process, however
// it ends. Reading waits for nobody, and no reader keeps the host waiting.
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
    // Throws a BAS::Status when another host has that file, or it can't be written.
    explicit StatusFile(std::filesystem::path file);
    StatusFile(StatusFile const&) = delete;
    StatusFile& operator=(StatusFile const&) = delete;
    // Removes the file.
    ~StatusFile();

    // Throws a BAS::Status when that isn't possible; what was written before stays.
    void write(std::string_view text);

private:
    std::filesystem::path fileM;
    FileDescriptor claimM;                 // of the file that was there first
    std::unique_ptr<TemporaryFile> thereM; // that was written last; locked
};

// What a running host wrote there last; nothing when none runs. Throws a BAS::Status when the file
// can't be read.
std::optional<std::string> readStatusFile(std::filesystem::path const& file);

} // namespace host
