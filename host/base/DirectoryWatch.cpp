#include "base/DirectoryWatch.h"

#include "base/Failures.h"

#include <sys/inotify.h>

#include <array>

namespace host {

namespace {

// A change of rights or times may make a file readable that wasn't.
constexpr std::uint32_t watchedChanges =
    IN_MOVED_TO | IN_CLOSE_WRITE | IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

} // namespace

DirectoryWatch::DirectoryWatch(std::filesystem::path const& directory)
    : descriptorM(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
    if (!descriptorM.isOpen() ||
        ::inotify_add_watch(descriptorM.number(), directory.c_str(), watchedChanges) < 0) {
        throw fileStatus("ERR_DIRECTORY_NOT_USABLE", directory, errno);
    }
}

bool DirectoryWatch::takeChanges() {
    std::array<char, 4096> changes; // ignored: the directory is listed
    bool isChanged = false;
    while (::read(descriptorM.number(), changes.data(), changes.size()) > 0) {
        isChanged = true;
    }
    return isChanged;
}

} // namespace host
