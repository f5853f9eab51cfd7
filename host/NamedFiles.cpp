#include "NamedFiles.h"

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>

#include <array>
#include <system_error>

namespace host {

namespace {

constexpr std::uint32_t writing = IN_MODIFY | IN_CLOSE_WRITE;

// Nothing for a directory, and when there is no file.
std::optional<std::uint64_t> inodeOf(std::filesystem::path const& path) {
    struct stat found = {};
    if (::stat(path.c_str(), &found) != 0 || S_ISDIR(found.st_mode)) {
        return std::nullopt;
    }
    return found.st_ino;
}

FileDescriptor watchWriting(std::filesystem::path const& path) {
    FileDescriptor watch(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    if (::inotify_add_watch(watch.number(), path.c_str(), writing) < 0) {
        return {};
    }
    return watch;
}

std::uint64_t sizeOf(std::filesystem::path const& path) {
    std::error_code error;
    auto const size = std::filesystem::file_size(path, error);
    return error ? 0 : size;
}

std::string whyNotOpened(std::filesystem::path const& path) {
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) {
        return "it is a directory";
    }
    auto const directory = path.parent_path();
    if (!std::filesystem::is_directory(directory, error)) {
        return "there is no directory '" + directory.string() + "'";
    }
    bool const isThere = std::filesystem::exists(path, error);
    if (::faccessat(AT_FDCWD, isThere ? path.c_str() : directory.c_str(), W_OK, AT_EACCESS) != 0) {
        return std::generic_category().message(errno);
    }
    return "nothing opened it for writing";
}

} // namespace

NamedFiles::NamedFiles(BAS::RegistryEntry const& update) {
    for (auto const& key : update.children()) {
        auto const value = key->value().str();
        if (value.empty() || value.find('\0') != std::string::npos) {
            continue;
        }
        std::error_code error;
        Candidate candidate{key->name().str(),
                            std::filesystem::absolute(value, error),
                            value.find('/') != std::string::npos,
                            std::nullopt,
                            {}};
        candidate.inodeBefore = inodeOf(candidate.path);
        if (candidate.inodeBefore) {
            candidate.watch = watchWriting(candidate.path);
        }
        candidatesM.push_back(std::move(candidate));
    }
}

std::vector<NamedFile> NamedFiles::report() const {
    std::vector<NamedFile> files;
    for (auto const& candidate : candidatesM) {
        NamedFile file{
            candidate.key, candidate.path.lexically_normal(), wasOpened(candidate), 0, {}};
        if (file.isOpened) {
            file.size = sizeOf(candidate.path);
        } else if (candidate.looksLikePath) {
            file.reason = whyNotOpened(candidate.path);
        } else {
            continue;
        }
        files.push_back(std::move(file));
    }
    return files;
}

bool NamedFiles::wasOpened(Candidate const& candidate) {
    auto const inode = inodeOf(candidate.path);
    if (!inode || inode != candidate.inodeBefore) {
        return inode.has_value();
    }
    std::array<char, 4096> events;
    return candidate.watch.isOpen() &&
           ::read(candidate.watch.number(), events.data(), events.size()) > 0;
}

} // namespace host
