#include "base/WholeFile.h"

#include "base/Failures.h"
#include "base/FileDescriptor.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cstdio>

namespace host {

std::string readWholeFile(std::filesystem::path const& file) {
    FileDescriptor const descriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
    std::string text;
    std::array<char, 16384> piece;
    ssize_t count = descriptor.isOpen() ? 0 : -1;
    while (descriptor.isOpen() &&
           (count = ::read(descriptor.number(), piece.data(), piece.size())) != 0) {
        if (count < 0 && errno != EINTR) {
            break;
        }
        text.append(piece.data(), count < 0 ? 0 : static_cast<std::size_t>(count));
    }
    if (count < 0) {
        throw fileStatus("ERR_FILE_NOT_READABLE", file, errno);
    }
    return text;
}

void writeWholeFile(std::filesystem::path const& file, std::string_view text) {
    auto const temporary = file.parent_path() / ("." + file.filename().string() + ".tmp");
    FileDescriptor const descriptor(
        ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    // Root sends commands to hosts of other users, whatever its umask.
    if (!descriptor.isOpen() || ::fchmod(descriptor.number(), 0644) != 0 ||
        !writeAll(descriptor.number(), text) || ::rename(temporary.c_str(), file.c_str()) != 0) {
        auto const error = errno;
        ::unlink(temporary.c_str());
        throw fileStatus("ERR_FILE_NOT_WRITABLE", file, error);
    }
}

} // namespace host
