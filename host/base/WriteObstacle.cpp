#include "base/WriteObstacle.h"

#include <fcntl.h>
#include <sys/statvfs.h>
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
    return std::nullopt;
}

std::optional<std::string> directoryObstacle(std::filesystem::path const& directory) {
    std::error_code error;
    return std::filesystem::is_directory(directory, error)
               ? std::nullopt
               : std::optional("the directory '" + directory.string() + "' doesn't exist");
}

// Zero, or the error number.
int accessError(std::filesystem::path const& path, int mode) {
    return ::faccessat(AT_FDCWD, path.c_str(), mode, AT_EACCESS) == 0 ? 0 : errno;
}

std::optional<std::string> textOf(int error) {
    return error == 0 ? std::nullopt : std::optional(std::generic_category().message(error));
}

// Why no file can be made in the directory. Some file systems have any number of files, and say 0.
std::optional<std::string> spaceObstacle(std::filesystem::path const& directory) {
    struct statvfs system = {};
    if (::statvfs(directory.c_str(), &system) != 0) {
        return std::nullopt;
    }
    bool const isRoot = ::geteuid() == 0;
    if (system.f_files > 0 && (isRoot ? system.f_ffree : system.f_favail) == 0) {
        return "the file system has no room for another file";
    }
    if (system.f_blocks > 0 && (isRoot ? system.f_bfree : system.f_bavail) == 0) {
        return "the file system is full";
    }
    return std::nullopt;
}

std::optional<std::string> creationObstacle(std::filesystem::path const& file) {
    auto const directory = file.parent_path();
    if (auto obstacle = directoryObstacle(directory)) {
        return obstacle;
    }
    auto obstacle = textOf(accessError(directory, W_OK | X_OK));
    return obstacle ? obstacle : spaceObstacle(directory);
}

} // namespace

std::optional<std::string> writeObstacle(std::filesystem::path const& file) {
    if (auto obstacle = kindObstacle(file)) {
        return obstacle;
    }
    auto const error = accessError(file, W_OK);
    if (error != ENOENT) {
        auto obstacle = error == ENOTDIR ? directoryObstacle(file.parent_path()) : std::nullopt;
        return obstacle ? obstacle : textOf(error);
    }
    std::error_code noLink; // a chain of links that ends
    auto const target = std::filesystem::read_symlink(file, noLink);
    return noLink ? creationObstacle(file) : writeObstacle(file.parent_path() / target);
}

std::optional<std::string> replaceObstacle(std::filesystem::path const& file) {
    for (auto const& obstacle : {kindObstacle(file), directoryObstacle(file.parent_path())}) {
        if (obstacle) {
            return obstacle;
        }
    }
    return textOf(accessError(file.parent_path(), W_OK | X_OK));
}

} // namespace host
