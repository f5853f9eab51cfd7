// A file that is written front to back in large pieces.
#pragma once

#include "base/FileDescriptor.h"

#include <fmt/compile.h>
#include <fmt/format.h>

#include <filesystem>
#include <iterator>
#include <string_view>

namespace host {

class GeneratedFile {
public:
    // Replaces a file that is there. Throws a BAS::Status when it can't be opened.
    explicit GeneratedFile(std::filesystem::path file);

    // Both throw a BAS::Status when the file can't be written.
    template <class Format, class... Args>
    void print(Format const& format, Args const&... arguments) {
        fmt::format_to(std::back_inserter(bufferM), format, arguments...);
        writeFullBuffer();
    }
    void write(std::string_view text);

    // Writes what is left. Throws a BAS::Status when that isn't possible.
    void close();

private:
    void writeFullBuffer();
    void writeBuffer();

    std::filesystem::path fileM;
    FileDescriptor descriptorM;
    fmt::memory_buffer bufferM;
};

} // namespace host
