// What signals mean to a process that runs pipelines, as long as the object lives: SIGTERM and
// SIGINT ask it to end, and a second one ends it at once, with exit code 130; SIGHUP asks it to
// open its logs again; those that would end it without having a meaning are ignored.
#pragma once

#include "base/Bell.h"
#include "base/StopSignals.h"

#include <csignal>
#include <vector>

namespace host {

class ProcessSignals {
public:
    // Notification and bell must outlive the object, of which there is one at a time.
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

    void set(int signal, void (*handler)(int));

    StopSignals stopM;
    std::vector<Before> beforeM;
};

} // namespace host
