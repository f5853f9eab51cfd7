// The bytes of one input, a file or standard input. What gzip or zstd compressed is decompressed:
// files whose names end in .gz or .zst, and any other input that begins like compressed data.
#pragma once

#include "base/FileDescriptor.h"
#include "base/Notification.h"
#include "input/Decompressor.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <vector>

namespace host {

// Thrown when the wait for bytes ends because the program is to end, or the input is abandoned.
struct InputStopped {};

class InputFile {
public:
    // What ends the wait for bytes; null for nothing.
    struct Ends {
        Notification const* stop = nullptr;      // when there are none
        Notification const* abandoned = nullptr; // at once
    };

    // The path "-" is standard input. The events must outlive the object. Throws a BAS::Status when
    // the file can't be opened.
    InputFile(std::filesystem::path file, Ends ends);

    // Waits for bytes and returns how many there are, 0 at the end. Throws a BAS::Status when
    // reading fails, and when compressed data are damaged or break off; what stands before that has
    // then been returned by the calls before. Throws InputStopped when a notification ends the
    // wait.
    std::size_t read(std::span<char> target);

    // How many bytes were read from the file, compressed as they may be.
    std::uint64_t bytesRead() const noexcept { return bytesReadM; }

private:
    void waitForBytes() const;
    std::size_t readFile(std::span<char> target);
    // Reads more bytes behind the pending ones, with which the buffer must begin; false at the end.
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
