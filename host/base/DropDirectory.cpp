#include "base/DropDirectory.h"

#include "base/SystemError.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/inotify.h>

#include <algorithm>
#include <array>

namespace host {

namespace {

constexpr std::array<std::string_view, 2> incompleteSuffixes = {".tmp", ".part"};
// A change of rights or times may make a file readable that wasn't.
constexpr std::uint32_t watchedChanges =
    IN_MOVED_TO | IN_CLOSE_WRITE | IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

bool isCompleteName(std::string_view name) {
    return !name.starts_with('.') &&
           std::none_of(incompleteSuffixes.begin(), incompleteSuffixes.end(),
                        [&](std::string_view suffix) { return name.ends_with(suffix); });
}

} // namespace

DirectoryWatch::DirectoryWatch(std::filesystem::path const& directory)
    : descriptorM(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
    if (!descriptorM.isOpen() ||
        ::inotify_add_watch(descriptorM.number(), directory.c_str(), watchedChanges) < 0) {
        throw fileStatus("ERR_DIRECTORY_NOT_USABLE", directory, errno);
    }
}

bool DirectoryWatch::takeChanges() {
    std::array<char, 4096> events; // what they say doesn't matter, the directory is listed
    bool isChanged = false;
    while (::read(descriptorM.number(), events.data(), events.size()) > 0) {
        isChanged = true;
    }
    return isChanged;
}

std::vector<std::string> completeFiles(std::filesystem::path const& directory,
                                       std::string_view suffix) {
    std::vector<std::string> names;
    std::error_code error;
    std::filesystem::directory_iterator entries(directory, error);
    for (; !error && entries != std::filesystem::directory_iterator(); entries.increment(error)) {
        auto name = entries->path().filename().string();
        std::error_code gone; // a file that vanishes is none
        if (name.ends_with(suffix) && isCompleteName(name) && entries->is_regular_file(gone)) {
            names.push_back(std::move(name));
        }
    }
    if (error) {
        throw fileStatus("ERR_DIRECTORY_NOT_USABLE", directory, error.value());
    }
    std::sort(names.begin(), names.end());
    return names;
}

void requireUsableDirectory(std::filesystem::path const& directory) {
    std::error_code error;
    if (std::filesystem::exists(directory, error) &&
        !std::filesystem::is_directory(directory, error)) {
        throw fileStatus("ERR_DIRECTORY_NOT_USABLE", directory, ENOTDIR);
    }
    if (::faccessat(AT_FDCWD, directory.c_str(), R_OK | W_OK | X_OK, AT_EACCESS) != 0) {
        throw fileStatus("ERR_DIRECTORY_NOT_USABLE", directory, errno);
    }
}

FileDescriptor lockDirectory(std::filesystem::path const& directory) {
    FileDescriptor descriptor(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!descriptor.isOpen()) {
        throw fileStatus("ERR_DIRECTORY_NOT_USABLE", directory, errno);
    }
    if (::flock(descriptor.number(), LOCK_EX | LOCK_NB) != 0) {
        throw makeStatus(BAS::Status::critical, {}, "ERR_DIRECTORY_IN_USE", {directory.string()});
    }
    return descriptor;
}

} // namespace host
