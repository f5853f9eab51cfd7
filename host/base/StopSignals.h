// During its lifetime, SIGTERM and SIGINT ask the program to stop instead of killing it. A second
// signal ends the process at once, with exit code 130.
#pragma once

#include "base/Notification.h"

#include <csignal>

namespace host {

class StopSignals {
public:
    // The notification is set by the first signal and must outlive the object. Only one object may
    // exist at a time.
    explicit StopSignals(Notification& stop);
    StopSignals(StopSignals const&) = delete;
    StopSignals& operator=(StopSignals const&) = delete;
    // Restores the former handlers.
    ~StopSignals();

private:
    struct sigaction terminateBeforeM = {};
    struct sigaction interruptBeforeM = {};
};

} // namespace host
