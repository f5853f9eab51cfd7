// Whether a file could be written, found out without making or opening it.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace host {

// Why the file can't be opened for writing, as far as that can be seen; nothing when it seems that
// it can.
std::optional<std::string> writeObstacle(std::filesystem::path const& file);

} // namespace host
