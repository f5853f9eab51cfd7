// The service manager that started the process, if one did: it is told how the process is doing, by
// datagrams to the socket that the environment variable NOTIFY_SOCKET names. The protocol is fixed
// and needs one system call, which is less than a library that every installation would have to
// bring. Any thread.
#pragma once

#include "base/FileDescriptor.h"

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace host {

class ServiceManager {
public:
    // Takes the variables out of the environment, so that no plug-in speaks for the host.
    ServiceManager();

    bool isThere() const noexcept { return socketM.isOpen(); }
    // The time without a sign of life after which the service manager ends the process, if it
    // watches it.
    std::optional<std::chrono::microseconds> watchdogTime() const noexcept { return watchdogM; }

    // Assignments, one a line, such as "READY=1". Does nothing when there is no service manager,
    // or when it doesn't listen.
    void tell(std::string_view assignments) const noexcept;

private:
    FileDescriptor socketM;
    std::string addressM; // as the system wants it
    std::optional<std::chrono::microseconds> watchdogM;
};

} // namespace host
