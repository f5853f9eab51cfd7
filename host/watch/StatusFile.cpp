#include "watch/StatusFile.h"

#include "base/Failures.h"
#include "base/WholeFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>

namespace host {

namespace {

// What is locked of a file: a byte of it each, which needn't be there. The claim keeps other hosts
// away; the content is locked besides once the file tells of this host.
struct Part {
    off_t start;
    off_t length;
};
constexpr Part content = {0, 1};
constexpr Part claim = {1, 1};
constexpr Part both = {0, 2};

struct flock lockOf(Part const& part, short type) {
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = part.start;
    lock.l_len = part.length;
    return lock;
}

bool lock(int descriptor, Part const& part) {
    auto request = lockOf(part, F_WRLCK);
    return ::fcntl(descriptor, F_OFD_SETLK, &request) == 0;
}

bool isContentLocked(FileDescriptor const& file) {
    auto request = lockOf(content, F_RDLCK);
    return ::fcntl(file.number(), F_OFD_GETLK, &request) == 0 && request.l_type != F_UNLCK;
}

bool isStillThere(int descriptor, std::filesystem::path const& path) {
    struct stat opened = {};
    struct stat named = {};
    return ::fstat(descriptor, &opened) == 0 && ::lstat(path.c_str(), &named) == 0 &&
           opened.st_ino == named.st_ino && opened.st_dev == named.st_dev;
}

void requireRegularFile(FileDescriptor const& file, std::filesystem::path const& path) {
    struct stat found = {};
    if (file.isOpen() && ::fstat(file.number(), &found) == 0 && !S_ISREG(found.st_mode)) {
        throw makeStatus(BAS::Status::critical, {}, "ERR_FILE_NOT_READABLE",
                         {path.string(), std::string(fileKindName(found.st_mode)) +
                                             ", expected a regular file or none"});
    }
}

// The file that is there, or a new one, with the claim on it: of hosts that start at the same time,
// one has it.
FileDescriptor claimed(std::filesystem::path const& path) {
    for (;;) {
        FileDescriptor file(
            ::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0640));
        if (!file.isOpen()) {
            throw fileStatus("ERR_FILE_NOT_WRITABLE", path, errno);
        }
        requireRegularFile(file, path);
        if (!lock(file.number(), claim)) {
            throw makeStatus(BAS::Status::critical, {}, "ERR_STATUS_FILE_IN_USE", {path.string()});
        }
        // Otherwise a host has replaced or removed it meanwhile.
        if (isStillThere(file.number(), path)) {
            return file;
        }
    }
}

// The file that a running host has written; not open when none runs.
FileDescriptor openWritten(std::filesystem::path const& path) {
    for (;;) {
        FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        if (!file.isOpen() && errno != ENOENT && errno != ENOTDIR) {
            throw fileStatus("ERR_FILE_NOT_READABLE", path, errno);
        }
        requireRegularFile(file, path);
        if (!file.isOpen() || isContentLocked(file)) {
            return file;
        }
        // The host gives the lock up once another file is there.
        if (isStillThere(file.number(), path)) {
            return {};
        }
    }
}

} // namespace

StatusFile::StatusFile(std::filesystem::path file)
    : fileM(std::move(file)), claimM(claimed(fileM)) {
}

StatusFile::~StatusFile() {
    if (isStillThere(thereM == nullptr ? claimM.number() : thereM->descriptor(), fileM)) {
        ::unlink(fileM.c_str());
    }
}

void StatusFile::write(std::string_view text) {
    auto next = std::make_unique<TemporaryFile>(fileM);
    if (!lock(next->descriptor(), both)) {
        throw fileStatus("ERR_FILE_NOT_WRITABLE", fileM, errno);
    }
    next->write(text);
    next->takePlace();
    thereM = std::move(next); // the one before is unlocked when it is closed
}

std::optional<std::string> readStatusFile(std::filesystem::path const& path) {
    auto const file = openWritten(path);
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
