// The bytes of one input, a file or standard input. Decompresses gzip and zstd data: files whose
// names end in .gz or .zst, and any other input that begins like such data.
#pragma once

#include "base/FileDescriptor.h"
#include "base/Notification.h"
#include "base/Poll.h"
#include "input/Decompressor.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace host {

// Thrown when the wait for bytes ends because the program stops or the input is abandoned.
struct InputStopped {};

class InputFile {
public:
    // Notifications that end the wait for bytes, or null.
    struct Ends {
        Notification const* stop = nullptr;      // if there are no bytes
        Notification const* abandoned = nullptr; // in any case
    };

    // The path "-" is standard input; a descriptor is that of the file when it is open already. The
    // notifications must outlive the object. Throws a BAS::Status when the file can't be opened.
    InputFile(std::filesystem::path file, std::optional<int> opened, Ends ends);

    // Waits for bytes and returns how many there are, 0 at the end. Throws a BAS::Status when
    // reading fails and when compressed data are damaged or truncated, after earlier calls have
    // returned all that comes before. Throws InputStopped when a notification ends the wait.
    std::size_t read(std::span<char> target);

    // Whether read would return without waiting.
    bool hasBytes() const;
    // Waits until it would, or until a notification is set; false when that isn't before the time.
    bool waitForBytes(std::chrono::steady_clock::time_point end) const;

    // How many bytes were read from the file, before decompression.
    std::uint64_t bytesRead() const noexcept { return bytesReadM; }

private:
    bool waitUntilReady(Deadline end) const;
    void requireBytes() const;
    std::size_t readFile(std::span<char> target);
    // Appends bytes to the pending ones, which must be at the start of the buffer; false at the
    // end.
    bool fillBuffer();
    void recogniseCompression();
    std::size_t takeFromBuffer(std::span<char> target);
    std::size_t decompress(std::span<char> target);

    std::filesystem::path fileM;
    Ends endsM;
    FileDescriptor descriptorM;
    std::vector<char> bufferM;
    std::span<char const> pendingM; // of the buffer
    std::uint64_t bytesReadM = 0;   // from the file
    bool isRecognisedM = false;
    std::unique_ptr<Decompressor> decompressorM; // null when the bytes are plain
};

} // namespace host
