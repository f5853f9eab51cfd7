// Checks whether a file could be written, without creating or opening it.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace host {

// Why the file can't be opened for writing; nothing when it probably can.
std::optional<std::string> writeObstacle(std::filesystem::path const& file);

} // namespace host
