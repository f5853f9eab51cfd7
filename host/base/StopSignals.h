// While it lives, SIGTERM and SIGINT ask the program to end instead of killing it. A second signal
// ends the process at once, with exit code 130.
#pragma once

#include "base/Notification.h"

#include <csignal>

namespace host {

class StopSignals {
public:
    // The notification is set by the first signal and must outlive the object, of which there is
    // one at a time.
    explicit StopSignals(Notification& stop);
    StopSignals(StopSignals const&) = delete;
    StopSignals& operator=(StopSignals const&) = delete;
    // Gives the signals back what they did before.
    ~StopSignals();

private:
    struct sigaction terminateBeforeM = {};
    struct sigaction interruptBeforeM = {};
};

} // namespace host
