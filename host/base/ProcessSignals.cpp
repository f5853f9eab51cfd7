#include "base/ProcessSignals.h"

#include <array>
#include <atomic>

namespace host {

namespace {

// Write errors are seen where they happen: a write that meets a limit of file sizes, or a reader
// that is gone, fails like any other instead of ending the process.
constexpr std::array ignored = {SIGPIPE,   SIGXFSZ, SIGUSR1, SIGUSR2,   SIGALRM,
                                SIGVTALRM, SIGPROF, SIGPOLL, SIGSTKFLT, SIGPWR};

std::atomic<Bell*> hangUpBell{nullptr};

void onHangUp(int /*signal*/) {
    if (auto* const bell = hangUpBell.load()) {
        bell->ring();
    }
}

} // namespace

ProcessSignals::ProcessSignals(Notification& stop, Bell& hangUp) : stopM(stop) {
    hangUpBell = &hangUp;
    set(SIGHUP, onHangUp);
    for (auto const signal : ignored) {
        set(signal, SIG_IGN);
    }
    for (int signal = SIGRTMIN; signal <= SIGRTMAX; ++signal) {
        set(signal, SIG_IGN);
    }
}

ProcessSignals::~ProcessSignals() {
    for (auto const& before : beforeM) {
        ::sigaction(before.signal, &before.action, nullptr);
    }
    hangUpBell = nullptr;
}

void ProcessSignals::set(int signal, void (*handler)(int)) {
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    Before before = {signal, {}};
    if (::sigaction(signal, &action, &before.action) == 0) {
        beforeM.push_back(before);
    }
}

} // namespace host
