// Remembers a pipeline's position in the file that it is reading, so that a restart resumes there.
// The state is one record that a single write replaces within one disk sector: it is written as a
// whole or not at all, also when the process is killed.
#pragma once

#include "base/FileDescriptor.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace host {

// How much of an input was processed.
struct InputPosition {
    std::uint64_t bytes = 0;         // of the input, as they are read (after decompression)
    std::uint64_t rejectedBytes = 0; // size of the reject file
};

// Distinguishes a file from a later one of the same name.
struct FileIdentity {
    std::uint64_t inode = 0;
    std::uint64_t size = 0;
    std::int64_t modified = 0; // nanoseconds since 1970

    // Nothing when the file can't be examined, with the reason in errno.
    static std::optional<FileIdentity> of(std::filesystem::path const& file);
    static std::optional<FileIdentity> of(int descriptor);
    bool operator==(FileIdentity const&) const = default;
};

struct InputState {
    std::string name; // of the file in its directory
    FileIdentity identity;
    InputPosition position;
    std::string doneName; // that the file will have when it is done
};

class InputStateFile {
public:
    // Throws a BAS::Status when the file can't be opened or created.
    explicit InputStateFile(std::filesystem::path file);

    // Nothing when there is no state or it is damaged.
    std::optional<InputState> read() const;
    // Throw a BAS::Status when the state can't be written.
    void write(InputState const& state);
    void clear();

private:
    void writeRecord(std::string record);

    std::filesystem::path fileM;
    FileDescriptor descriptorM;
};

} // namespace host
