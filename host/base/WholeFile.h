// Files that are read or written as a whole.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace host {

// Throws a BAS::Status when the file can't be read.
std::string readWholeFile(std::filesystem::path const& file);

// Writes the text under a temporary name beside the file and renames it, so that readers never see
// a part of it; all users may read the file. Throws a BAS::Status when that isn't possible.
void writeWholeFile(std::filesystem::path const& file, std::string_view text);

} // namespace host
