// What signals mean to a process that runs pipelines, as long as the object lives: SIGTERM and
// SIGINT ask it to end, and a second one ends it at once, with exit code 130; SIGHUP asks it to
// open its logs again; those that would end it without having a meaning are ignored.
#pragma once

#include "base/SignalThread.h"

#include <csignal>
#include <vector>

namespace host {

class ProcessSignals {
public:
    // Before the process has other threads. Notification and bell must outlive the object.
    ProcessSignals(Notification& stop, Bell& hangUp);
    ProcessSignals(ProcessSignals const&) = delete;
    ProcessSignals& operator=(ProcessSignals const&) = delete;
    // Gives the signals back what they did before.
    ~ProcessSignals();

private:
    struct Before {
        int signal;
        struct sigaction action;
    };

    void ignore(int signal);

    SignalThread threadM;
    std::vector<Before> beforeM;
};

} // namespace host
