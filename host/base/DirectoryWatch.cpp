#include "base/DirectoryWatch.h"

#include "base/Failures.h"

#include <sys/inotify.h>
#include <sys/stat.h>

#include <array>
#include <cstring>

namespace host {

namespace {

// A change of rights or times may make a file readable that wasn't.
constexpr std::uint32_t watchedChanges =
    IN_MOVED_TO | IN_CLOSE_WRITE | IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
// A directory that somebody has open, as for its lock, doesn't tell that it is removed.
constexpr std::uint32_t watchedRemovals = IN_DELETE | IN_MOVED_FROM | IN_ONLYDIR;

} // namespace

DirectoryWatch::DirectoryWatch(std::filesystem::path const& directory)
    : pathM(directory), identityM(identityOf(directory)),
      descriptorM(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
    if (!descriptorM.isOpen() ||
        ::inotify_add_watch(descriptorM.number(), directory.c_str(), watchedChanges) < 0) {
        throw fileStatus("ERR_DIRECTORY_NOT_USABLE", directory, errno);
    }
    parentM =
        ::inotify_add_watch(descriptorM.number(), (directory / "..").c_str(), watchedRemovals);
}

bool DirectoryWatch::takeChanges() {
    std::array<char, 4096> events; // what they say is ignored: the directory is listed
    bool isChanged = false;
    bool isAny = false;
    bool isGone = false;
    for (ssize_t count; (count = ::read(descriptorM.number(), events.data(), events.size())) > 0;) {
        isAny = true;
        for (ssize_t at = 0; at < count;) {
            inotify_event event;
            std::memcpy(&event, events.data() + at, sizeof event);
            bool const isOwn = parentM < 0 || event.wd != parentM;
            isChanged = isChanged || isOwn;
            isGone = isGone || (isOwn && (event.mask & IN_IGNORED) != 0);
            at += static_cast<ssize_t>(sizeof event + event.len);
        }
    }
    if (isGone || (isAny && identityOf(pathM) != identityM)) {
        throw fileStatus("ERR_DIRECTORY_NOT_USABLE", pathM, ENOENT);
    }
    return isChanged;
}

DirectoryWatch::Identity DirectoryWatch::identityOf(std::filesystem::path const& directory) {
    struct stat found = {};
    return ::stat(directory.c_str(), &found) == 0
               ? Identity(std::in_place, found.st_dev, found.st_ino)
               : std::nullopt;
}

} // namespace host
