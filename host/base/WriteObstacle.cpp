#include "base/WriteObstacle.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace host {

namespace {

std::optional<std::string> kindObstacle(std::filesystem::path const& file) {
    std::error_code error;
    if (std::filesystem::is_directory(file, error)) {
        return "it is a directory";
    }
    auto const directory = file.parent_path();
    if (!std::filesystem::is_directory(directory, error)) {
        return "the directory '" + directory.string() + "' doesn't exist";
    }
    return std::nullopt;
}

std::optional<std::string> accessObstacle(std::filesystem::path const& path, int mode) {
    return ::faccessat(AT_FDCWD, path.c_str(), mode, AT_EACCESS) == 0
               ? std::nullopt
               : std::optional(std::generic_category().message(errno));
}

} // namespace

std::optional<std::string> writeObstacle(std::filesystem::path const& file) {
    if (auto obstacle = kindObstacle(file)) {
        return obstacle;
    }
    std::error_code error;
    bool const isThere = std::filesystem::exists(file, error);
    return accessObstacle(isThere ? file : file.parent_path(), W_OK);
}

std::optional<std::string> replaceObstacle(std::filesystem::path const& file) {
    auto obstacle = kindObstacle(file);
    return obstacle ? obstacle : accessObstacle(file.parent_path(), W_OK | X_OK);
}

} // namespace host
