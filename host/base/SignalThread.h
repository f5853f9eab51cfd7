// Takes signals of the process in a thread of its own: the first SIGTERM or SIGINT asks the program
// to stop instead of killing it, a second one ends the process at once, with exit code 130; SIGHUP
// rings a bell. No signal interrupts what another thread does, which may be a module's call that
// isn't prepared for it.
#pragma once

#include "base/Bell.h"
#include "base/FileDescriptor.h"
#include "base/Notification.h"

#include <csignal>
#include <thread>

namespace host {

class SignalThread {
public:
    // Before the process has other threads: the signals are blocked for the calling thread and for
    // all that are started from then on, and in processes that any of them starts without another
    // mask. SIGHUP stays what it is without a bell. Notification and bell must outlive the object.
    // Throws a BAS::Status when no descriptor is left.
    explicit SignalThread(Notification& stop, Bell* hangUp = nullptr);
    SignalThread(SignalThread const&) = delete;
    SignalThread& operator=(SignalThread const&) = delete;
    // Gives the calling thread its signals back.
    ~SignalThread();

private:
    void takeSignals();
    void take(int signal);

    Notification& stopM;
    Bell* const hangUpM;
    sigset_t blockedBeforeM = {};
    FileDescriptor signalsM;
    Notification endedM;
    std::thread threadM;
};

} // namespace host
