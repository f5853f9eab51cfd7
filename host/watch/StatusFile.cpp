#include "watch/StatusFile.h"

#include "base/Failures.h"
#include "base/WholeFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>

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
        FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
        if (!file.isOpen() && errno != ENOENT && errno != ENOTDIR) {
            throw fileStatus("ERR_FILE_NOT_READABLE", path, errno);
        }
        struct stat found = {};
        if (file.isOpen() && ::fstat(file.number(), &found) == 0 && !S_ISREG(found.st_mode)) {
            throw makeStatus(BAS::Status::critical, {}, "ERR_FILE_NOT_READABLE",
                             {path.string(), std::string(fileKindName(found.st_mode)) +
                                                 ", expected a regular file or none"});
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
    if (thereM != nullptr) {
        ::unlink(fileM.c_str());
    }
}

void StatusFile::write(std::string_view text) {
    auto next = std::make_unique<TemporaryFile>(fileM);
    auto lock = wholeFile(F_WRLCK);
    if (::fcntl(next->descriptor(), F_OFD_SETLK, &lock) != 0) {
        throw fileStatus("ERR_FILE_NOT_WRITABLE", fileM, errno);
    }
    next->write(text);
    next->takePlace();
    thereM = std::move(next); // the one before is unlocked when it is closed
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
