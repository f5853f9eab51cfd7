#include "base/TemporaryFile.h"

#include "base/Failures.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <cstdio>
#include <random>

namespace host {

namespace {

constexpr mode_t mode = 0640;

std::string randomName() {
    std::random_device random;
    return fmt::format(".{:08x}{:08x}.tmp", random(), random());
}

// By which a file without a name can be given one.
std::string linkTo(int descriptor) {
    return fmt::format("/proc/self/fd/{}", descriptor);
}

// Not open when the file system, or a system without /proc, can't have such a file.
FileDescriptor openNameless(int directory) {
    FileDescriptor file(::openat(directory, ".", O_WRONLY | O_TMPFILE | O_CLOEXEC, mode));
    bool const canBeNamed =
        file.isOpen() && ::faccessat(AT_FDCWD, linkTo(file.number()).c_str(), F_OK, 0) == 0;
    return canBeNamed ? std::move(file) : FileDescriptor();
}

FileDescriptor openDirectory(std::filesystem::path const& target) {
    auto const parent = target.parent_path();
    return FileDescriptor(
        ::open(parent.empty() ? "." : parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

} // namespace

TemporaryFile::TemporaryFile(std::filesystem::path const& target)
    : TemporaryFile(openDirectory(target), target) {
}

TemporaryFile::TemporaryFile(FileDescriptor directory, std::filesystem::path target)
    : targetM(std::move(target)), directoryM(std::move(directory)), nameM(randomName()) {
    if (directoryM.isOpen()) {
        fileM = openNameless(directoryM.number());
        if (!fileM.isOpen()) {
            isNamedM = true;
            fileM = FileDescriptor(::openat(directoryM.number(), nameM.c_str(),
                                            O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                                            mode));
        }
    }
    // Whatever the mask of who calls it: the group has to read it.
    if (!fileM.isOpen() || ::fchmod(fileM.number(), mode) != 0) {
        auto const error = errno;
        remove();
        throw fileStatus("ERR_FILE_NOT_WRITABLE", targetM, error);
    }
}

void TemporaryFile::setOwner(uid_t owner, gid_t group) {
    if (::fchown(fileM.number(), owner, group) != 0) {
        throw fileStatus("ERR_FILE_NOT_WRITABLE", targetM, errno);
    }
}

void TemporaryFile::write(std::string_view bytes) {
    if (!writeAll(fileM.number(), bytes)) {
        throw fileStatus("ERR_FILE_NOT_WRITABLE", targetM, errno);
    }
}

void TemporaryFile::flush() {
    if (::fsync(fileM.number()) != 0) {
        throw fileStatus("ERR_FILE_NOT_WRITABLE", targetM, errno);
    }
    isFlushedM = true;
}

void TemporaryFile::takePlace() {
    if (!isNamedM.exchange(true) &&
        ::linkat(AT_FDCWD, linkTo(fileM.number()).c_str(), directoryM.number(), nameM.c_str(),
                 AT_SYMLINK_FOLLOW) != 0) {
        throw fileStatus("ERR_FILE_NOT_WRITABLE", targetM, errno);
    }
    if (::renameat(directoryM.number(), nameM.c_str(), directoryM.number(),
                   targetM.filename().c_str()) != 0) {
        throw fileStatus("ERR_FILE_NOT_WRITABLE", targetM, errno);
    }
    isInPlaceM = true;
    if (isFlushedM) {
        ::fsync(directoryM.number()); // so that a power failure doesn't bring the old file back
    }
}

void TemporaryFile::remove() noexcept {
    if (fileM.isOpen() && isNamedM && !isInPlaceM) {
        ::unlinkat(directoryM.number(), nameM.c_str(), 0);
    }
}

} // namespace host
