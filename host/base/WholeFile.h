// Files that are read or written as a whole.
#pragma once

#include "base/FileDescriptor.h"

#include <sys/types.h>

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace host {

// "it is a FIFO" and the like, by the mode that stat gives.
std::string_view fileKindName(mode_t mode);

// The path of a regular file, opened for reading without waiting; links are followed. Throws a
// BAS::Status when there is none.
FileDescriptor openRegularFile(std::filesystem::path const& file);
// The same for a file that others put there: the path may not be a link.
FileDescriptor openForeignFile(std::filesystem::path const& file);

// Throws a BAS::Status when it isn't a regular file or can't be read.
std::string readWholeFile(std::filesystem::path const& file);
// From a file that is open, of which messages give the path. Throws a BAS::Status when it can't be
// read, or holds more bytes.
std::string readWholeFile(FileDescriptor const& descriptor, std::filesystem::path const& file,
                          std::optional<std::size_t> mostBytes);

// Writes the text under a temporary name beside the file and renames it, so that nobody sees a part
// of it. Owner and group may read the file; if root writes it, they are those of the directory.
// Throws a BAS::Status when that isn't possible.
void writeWholeFile(std::filesystem::path const& file, std::string_view text);

} // namespace host
