// Checks whether a file could be written or replaced, without creating or opening it.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace host {

// Why the file can't be opened for writing; nothing when it probably can.
std::optional<std::string> writeObstacle(std::filesystem::path const& file);
// Why no other file can be renamed to it; likewise.
std::optional<std::string> replaceObstacle(std::filesystem::path const& file);

} // namespace host
