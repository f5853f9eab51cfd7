#include "StopSignals.h"

#include "ExitCode.h"

#include <unistd.h>

namespace host {

namespace {

std::atomic<Event*> stopEvent{nullptr};

void onSignal(int /*signal*/) {
    auto* const stop = stopEvent.load();
    if (stop == nullptr || stop->isSet()) {
        ::_exit(interrupted);
    }
    stop->set();
}

} // namespace

StopSignals::StopSignals(Event& stop) {
    stopEvent = &stop;
    struct sigaction action = {};
    action.sa_handler = onSignal;
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGTERM, &action, &terminateBeforeM);
    ::sigaction(SIGINT, &action, &interruptBeforeM);
}

StopSignals::~StopSignals() {
    ::sigaction(SIGTERM, &terminateBeforeM, nullptr);
    ::sigaction(SIGINT, &interruptBeforeM, nullptr);
    stopEvent = nullptr;
}

} // namespace host
