// The bytes of one input, a file or standard input.
#pragma once

#include "FileDescriptor.h"

#include <filesystem>
#include <span>

namespace host {

class InputFile {
public:
    // The path "-" is standard input. Throws a BAS::Status when the file can't be opened.
    explicit InputFile(std::filesystem::path file);

    // Waits for bytes and returns how many there are, 0 at the end. Throws a BAS::Status when
    // reading fails.
    std::size_t read(std::span<char> target);

private:
    std::filesystem::path fileM;
    FileDescriptor descriptorM;
};

} // namespace host
