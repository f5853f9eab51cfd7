#include "commands/NamedFiles.h"

#include "base/WholeFile.h"
#include "base/WriteObstacle.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <array>
#include <system_error>

namespace host {

namespace {

// Less than a writer gathers before it writes.
constexpr std::uint64_t fullBelow = std::uint64_t{64} * 1024;

// Nothing for a directory or a missing file.
std::optional<std::uint64_t> inodeOf(std::filesystem::path const& path) {
    struct stat found = {};
    if (::stat(path.c_str(), &found) != 0 || S_ISDIR(found.st_mode)) {
        return std::nullopt;
    }
    return found.st_ino;
}

bool isStandardDescriptor(struct stat const& file) {
    constexpr std::array descriptors = {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO};
    return std::any_of(descriptors.begin(), descriptors.end(), [&](int descriptor) {
        struct stat own = {};
        return ::fstat(descriptor, &own) == 0 && own.st_dev == file.st_dev &&
               own.st_ino == file.st_ino;
    });
}

// Whoever wrote the file to its end can't have written more.
std::optional<std::string> obstacleToMore(std::filesystem::path const& path, std::uint64_t size) {
    struct statvfs system = {};
    if (::statvfs(path.c_str(), &system) == 0) {
        auto const blocks = ::geteuid() == 0 ? system.f_bfree : system.f_bavail;
        if (system.f_blocks > 0 && blocks * system.f_frsize < fullBelow) {
            return "the file system is full, so that it may be cut";
        }
    }
    rlimit most = {};
    if (::getrlimit(RLIMIT_FSIZE, &most) == 0 && most.rlim_cur != RLIM_INFINITY &&
        size >= most.rlim_cur) {
        return "it has reached the limit of file sizes, so that it may be cut";
    }
    return std::nullopt;
}

} // namespace

std::optional<std::string> openingObstacle(std::filesystem::path const& path) {
    struct stat found = {};
    if (::stat(path.c_str(), &found) != 0 || S_ISREG(found.st_mode) || S_ISCHR(found.st_mode) ||
        isStandardDescriptor(found)) {
        return std::nullopt;
    }
    return std::string(fileKindName(found.st_mode));
}

NamedFiles::NamedFiles(std::vector<PlainValue> const& values, WriteWatch& watch) : watchM(watch) {
    for (auto const& value : values) {
        std::error_code error;
        Candidate candidate;
        candidate.key = value.key;
        candidate.path = std::filesystem::absolute(value.text, error);
        candidate.looksLikePath = value.text.find('/') != std::string::npos;
        candidate.inode = inodeOf(candidate.path);
        candidate.watched = candidate.inode ? watchM.add(candidate.path) : -1;
        candidatesM.push_back(std::move(candidate));
    }
    watchM.takeWritten(); // by others, before the command
}

NamedFiles::~NamedFiles() {
    for (auto const& candidate : candidatesM) {
        if (candidate.watched >= 0) {
            watchM.remove(candidate.watched);
        }
    }
}

std::vector<NamedFile> NamedFiles::report() const {
    auto const written = watchM.takeWritten();
    std::vector<NamedFile> files;
    for (auto const& candidate : candidatesM) {
        auto const inode = inodeOf(candidate.path);
        bool const isOpened =
            inode && (inode != candidate.inode || written.find(candidate.watched) != written.end());
        if (isOpened || candidate.looksLikePath) {
            files.push_back(resultOf(candidate, isOpened));
        }
    }
    return files;
}

NamedFile NamedFiles::resultOf(Candidate const& candidate, bool isOpened) const {
    NamedFile file;
    file.key = candidate.key;
    file.path = candidate.path; // with any '..', which may come after a link
    file.isOpened = isOpened;
    if (!isOpened) {
        auto const obstacle = writeObstacle(candidate.path);
        file.hasFailed = obstacle.has_value();
        file.reason = obstacle.value_or("nothing opened it for writing");
        return file;
    }
    std::error_code error;
    auto const size = std::filesystem::file_size(candidate.path, error);
    file.size = error ? 0 : size;
    if (auto const obstacle = error ? std::nullopt : obstacleToMore(candidate.path, size)) {
        file.completeness = Completeness::cut;
        file.reason = *obstacle;
        file.hasFailed = true;
    }
    return file;
}

} // namespace host
