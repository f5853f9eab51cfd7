// A file that is written front to back in large pieces.
#pragma once

#include "base/FileDescriptor.h"

#include <fmt/compile.h>
#include <fmt/format.h>

#include <algorithm>
#include <concepts>
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
    template <std::convertible_to<std::string_view>... Texts>
    void write(Texts const&... texts) {
        auto const size = bufferM.size();
        bufferM.resize(size + (std::string_view(texts).size() + ...));
        auto* end = bufferM.data() + size;
        ((end = std::copy_n(std::string_view(texts).data(), std::string_view(texts).size(), end)),
         ...);
        writeFullBuffer();
    }

    // Writes what is left. Throws a BAS::Status when that isn't possible.
    void close();

private:
    static constexpr std::size_t pieceSize = std::size_t{1} << 20U;

    void writeFullBuffer() {
        if (bufferM.size() >= pieceSize) {
            writeBuffer();
        }
    }
    void writeBuffer();

    std::filesystem::path fileM;
    FileDescriptor descriptorM;
    fmt::memory_buffer bufferM;
};

} // namespace host
