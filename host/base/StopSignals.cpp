#include "base/StopSignals.h"

#include "base/ExitCode.h"

#include <unistd.h>

namespace host {

namespace {

std::atomic<Notification*> stopNotification{nullptr};

void onSignal(int /*signal*/) {
    auto* const stop = stopNotification.load();
    if (stop == nullptr || stop->isSet()) {
        ::_exit(interrupted);
    }
    stop->set();
}

} // namespace

StopSignals::StopSignals(Notification& stop) {
    stopNotification = &stop;
    struct sigaction action = {};
    action.sa_handler = onSignal;
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGTERM, &action, &terminateBeforeM);
    ::sigaction(SIGINT, &action, &interruptBeforeM);
}

StopSignals::~StopSignals() {
    ::sigaction(SIGTERM, &terminateBeforeM, nullptr);
    ::sigaction(SIGINT, &interruptBeforeM, nullptr);
    stopNotification = nullptr;
}

} // namespace host
