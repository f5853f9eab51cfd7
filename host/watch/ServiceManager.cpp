#include "watch/ServiceManager.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace host {

namespace {

// The variable's value, which is gone from the environment then; empty without one.
std::string takeVariable(char const* name) {
    char const* const value = std::getenv(name);
    std::string text = value == nullptr ? "" : value;
    ::unsetenv(name);
    return text;
}

std::optional<std::chrono::microseconds> takeWatchdogTime() {
    auto const process = takeVariable("WATCHDOG_PID");
    auto const microseconds = std::strtoll(takeVariable("WATCHDOG_USEC").c_str(), nullptr, 10);
    bool const isMeant = process.empty() || process == std::to_string(::getpid());
    return isMeant && microseconds > 0 ? std::optional(std::chrono::microseconds(microseconds))
                                       : std::nullopt;
}

} // namespace

ServiceManager::ServiceManager() : watchdogM(takeWatchdogTime()) {
    auto path = takeVariable("NOTIFY_SOCKET");
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path) {
        return;
    }
    if (path.front() == '@') {
        path.front() = '\0'; // an abstract name, not a file's
    }
    std::memcpy(address.sun_path, path.data(), path.size());
    addressM.assign(reinterpret_cast<char const*>(&address),
                    offsetof(sockaddr_un, sun_path) + path.size());
    socketM = FileDescriptor(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
}

void ServiceManager::tell(std::string_view assignments) const noexcept {
    if (isThere()) {
        static_cast<void>(::sendto(socketM.number(), assignments.data(), assignments.size(),
                                   MSG_DONTWAIT | MSG_NOSIGNAL,
                                   reinterpret_cast<sockaddr const*>(addressM.data()),
                                   static_cast<socklen_t>(addressM.size())));
    }
}

} // namespace host
