#include "base/WriteObstacle.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace host {

std::optional<std::string> writeObstacle(std::filesystem::path const& file) {
    std::error_code error;
    if (std::filesystem::is_directory(file, error)) {
        return "it is a directory";
    }
    auto const directory = file.parent_path();
    if (!std::filesystem::is_directory(directory, error)) {
        return "the directory '" + directory.string() + "' doesn't exist";
    }
    bool const isThere = std::filesystem::exists(file, error);
    if (::faccessat(AT_FDCWD, isThere ? file.c_str() : directory.c_str(), W_OK, AT_EACCESS) != 0) {
        return std::generic_category().message(errno);
    }
    return std::nullopt;
}

} // namespace host
