// Remembers how far a pipeline has come in the file that it is reading, so that a restart goes on
// there. The state is one record that a single write replaces in place, within one sector of a
// disk: it is there as a whole or not at all, also when the process is killed.
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
    std::uint64_t rejectedBytes = 0; // that the reject file holds
};

// Tells a file from another one that bears its name later.
struct FileIdentity {
    std::uint64_t inode = 0;
    std::uint64_t size = 0;
    std::int64_t modified = 0; // nanoseconds since 1970

    // Nothing when the file can't be looked at, with the reason in errno.
    static std::optional<FileIdentity> of(std::filesystem::path const& file);
    bool operator==(FileIdentity const&) const = default;
};

struct InputState {
    std::string name; // of the file in its directory
    FileIdentity identity;
    InputPosition position;
    std::string doneName; // which the file will bear when it is done
};

class InputStateFile {
public:
    // Throws a BAS::Status when the file can't be opened or made.
    explicit InputStateFile(std::filesystem::path file);

    // Nothing when there is no state or none that can be understood.
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
