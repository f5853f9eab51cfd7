#include "commands/NamedFiles.h"

#include "base/WriteObstacle.h"

#include <sys/stat.h>

#include <system_error>

namespace host {

namespace {

// Nothing for a directory or a missing file.
std::optional<std::uint64_t> inodeOf(std::filesystem::path const& path) {
    struct stat found = {};
    if (::stat(path.c_str(), &found) != 0 || S_ISDIR(found.st_mode)) {
        return std::nullopt;
    }
    return found.st_ino;
}

std::uint64_t sizeOf(std::filesystem::path const& path) {
    std::error_code error;
    auto const size = std::filesystem::file_size(path, error);
    return error ? 0 : size;
}

} // namespace

NamedFiles::NamedFiles(BAS::RegistryEntry const& update, WriteWatch& watch) : watchM(watch) {
    for (auto const& key : update.children()) {
        auto const value = key->value().str();
        if (value.empty() || value.find('\0') != std::string::npos) {
            continue;
        }
        std::error_code error;
        Candidate candidate;
        candidate.key = key->name().str();
        candidate.path = std::filesystem::absolute(value, error);
        candidate.looksLikePath = value.find('/') != std::string::npos;
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
        NamedFile file;
        file.key = candidate.key;
        file.path = candidate.path.lexically_normal();
        auto const inode = inodeOf(candidate.path);
        file.isOpened =
            inode && (inode != candidate.inode || written.find(candidate.watched) != written.end());
        if (file.isOpened) {
            file.size = sizeOf(candidate.path);
        } else if (candidate.looksLikePath) {
            file.reason = writeObstacle(candidate.path).value_or("nothing opened it for writing");
        } else {
            continue;
        }
        files.push_back(std::move(file));
    }
    return files;
}

} // namespace host
