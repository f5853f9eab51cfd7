#include "commands/WriteWatch.h"

#include "base/Failures.h"

#include <sys/inotify.h>

#include <array>
#include <cstring>

namespace host {

namespace {

constexpr std::uint32_t writing = IN_MODIFY | IN_CLOSE_WRITE;

} // namespace

WriteWatch::WriteWatch() : descriptorM(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
    if (!descriptorM.isOpen()) {
        throw systemStatus("inotify_init1", errno);
    }
}

WriteWatch::Number WriteWatch::add(std::filesystem::path const& path) {
    return ::inotify_add_watch(descriptorM.number(), path.c_str(), writing);
}

void WriteWatch::remove(Number number) {
    ::inotify_rm_watch(descriptorM.number(), number);
}

std::set<WriteWatch::Number> WriteWatch::takeWritten() {
    std::set<Number> written;
    std::array<char, 4096> buffer;
    for (ssize_t count; (count = ::read(descriptorM.number(), buffer.data(), buffer.size())) > 0;) {
        for (ssize_t at = 0; at < count;) {
            inotify_event event;
            std::memcpy(&event, buffer.data() + at, sizeof event);
            if ((event.mask & writing) != 0) {
                written.insert(event.wd);
            }
            at += static_cast<ssize_t>(sizeof event + event.len);
        }
    }
    return written;
}

} // namespace host
