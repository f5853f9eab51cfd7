#include "watch/StatusFile.h"

#include "base/Failures.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cstdio>

namespace host {

namespace {

struct flock wholeFile(short type) {
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    return lock;
}

bool isLocked(FileDescriptor const& file) {
    auto lock = wholeFile(F_RDLCK);
    return ::fcntl(file.number(), F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

bool isStillThere(FileDescriptor const& file, std::filesystem::path const& path) {
    struct stat opened = {};
    struct stat named = {};
    return ::fstat(file.number(), &opened) == 0 && ::stat(path.c_str(), &named) == 0 &&
           opened.st_ino == named.st_ino && opened.st_dev == named.st_dev;
}

// The file that a running host has locked; not open when none runs.
FileDescriptor openLocked(std::filesystem::path const& path) {
    for (;;) {
        FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
        if (!file.isOpen() && errno != ENOENT && errno != ENOTDIR) {
            throw fileStatus("ERR_FILE_NOT_READABLE", path, errno);
        }
        if (!file.isOpen() || isLocked(file)) {
            return file;
        }
        // The host gives the lock up once another file is there.
        if (isStillThere(file, path)) {
            return {};
        }
    }
}

} // namespace

StatusFile::StatusFile(std::filesystem::path file) : fileM(std::move(file)) {
    if (openLocked(fileM).isOpen()) {
        throw makeStatus(BAS::Status::critical, {}, "ERR_STATUS_FILE_IN_USE", {fileM.string()});
    }
}

StatusFile::~StatusFile() {
    if (lockedM.isOpen()) {
        ::unlink(fileM.c_str());
    }
}

void StatusFile::write(std::string_view text) {
    auto const temporary = fileM.parent_path() / ("." + fileM.filename().string() + ".tmp");
    FileDescriptor next(::open(temporary.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0640));
    auto lock = wholeFile(F_WRLCK);
    if (!next.isOpen() || ::fcntl(next.number(), F_OFD_SETLK, &lock) != 0 ||
        ::fchmod(next.number(), 0640) != 0 || !writeAll(next.number(), text) ||
        ::rename(temporary.c_str(), fileM.c_str()) != 0) {
        auto const error = errno;
        ::unlink(temporary.c_str());
        throw fileStatus("ERR_FILE_NOT_WRITABLE", fileM, error);
    }
    lockedM = std::move(next); // the one before is unlocked when it is closed
}

std::optional<std::string> readStatusFile(std::filesystem::path const& path) {
    auto const file = openLocked(path);
    if (!file.isOpen()) {
        return std::nullopt;
    }
    std::string text;
    std::array<char, 16384> piece;
    ssize_t count = 0;
    while ((count = ::read(file.number(), piece.data(), piece.size())) > 0) {
        text.append(piece.data(), static_cast<std::size_t>(count));
    }
    if (count < 0) {
        throw fileStatus("ERR_FILE_NOT_READABLE", path, errno);
    }
    return text;
}

} // namespace host
