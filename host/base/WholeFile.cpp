#include "base/WholeFile.h"

#include "base/Failures.h"
#include "base/TemporaryFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <array>

namespace host {

namespace {

BAS::Status unreadable(std::filesystem::path const& file, std::string const& reason) {
    return makeStatus(BAS::Status::critical, {}, "ERR_FILE_NOT_READABLE", {file.string(), reason});
}

FileDescriptor openRegularFile(std::filesystem::path const& file, int flags) {
    FileDescriptor descriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | flags));
    if (!descriptor.isOpen()) {
        throw errno == ELOOP && flags != 0
            ? unreadable(file, "it is a link, expected a regular file")
            : fileStatus("ERR_FILE_NOT_READABLE", file, errno);
    }
    struct stat found = {};
    if (::fstat(descriptor.number(), &found) != 0) {
        throw fileStatus("ERR_FILE_NOT_READABLE", file, errno);
    }
    if (!S_ISREG(found.st_mode)) {
        throw unreadable(file,
                         std::string(fileKindName(found.st_mode)) + ", expected a regular file");
    }
    return descriptor;
}

} // namespace

std::string_view fileKindName(mode_t mode) {
    switch (mode & S_IFMT) {
    case S_IFREG:
        return "it is a regular file";
    case S_IFDIR:
        return "it is a directory";
    case S_IFLNK:
        return "it is a link";
    case S_IFIFO:
        return "it is a FIFO";
    case S_IFSOCK:
        return "it is a socket";
    case S_IFBLK:
        return "it is a block device";
    default:
        return "it is a device";
    }
}

FileDescriptor openRegularFile(std::filesystem::path const& file) {
    return openRegularFile(file, 0);
}

FileDescriptor openForeignFile(std::filesystem::path const& file) {
    return openRegularFile(file, O_NOFOLLOW);
}

std::string readWholeFile(std::filesystem::path const& file) {
    return readWholeFile(openRegularFile(file), file, std::nullopt);
}

std::string readWholeFile(FileDescriptor const& descriptor, std::filesystem::path const& file,
                          std::optional<std::size_t> mostBytes) {
    std::string text;
    std::array<char, 16384> piece;
    for (;;) {
        auto const count = ::read(descriptor.number(), piece.data(), piece.size());
        if (count < 0 && errno != EINTR) {
            throw fileStatus("ERR_FILE_NOT_READABLE", file, errno);
        }
        if (count == 0) {
            return text;
        }
        text.append(piece.data(), count < 0 ? 0 : static_cast<std::size_t>(count));
        if (mostBytes && text.size() > *mostBytes) {
            throw unreadable(file, fmt::format("it is larger than {} bytes", *mostBytes));
        }
    }
}

void writeWholeFile(std::filesystem::path const& file, std::string_view text) {
    TemporaryFile temporary(file);
    struct stat directory = {};
    auto const parent = file.parent_path();
    if (::geteuid() == 0 && ::stat(parent.empty() ? "." : parent.c_str(), &directory) == 0) {
        temporary.setOwner(directory.st_uid, directory.st_gid);
    }
    temporary.write(text);
    temporary.takePlace();
}

} // namespace host
