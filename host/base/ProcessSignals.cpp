#include "base/ProcessSignals.h"

#include <array>

namespace host {

namespace {

// Write errors are seen where they happen: a write that meets a limit of file sizes, or a reader
// that is gone, fails like any other instead of ending the process.
constexpr std::array ignored = {SIGPIPE,   SIGXFSZ, SIGUSR1, SIGUSR2,   SIGALRM,
                                SIGVTALRM, SIGPROF, SIGPOLL, SIGSTKFLT, SIGPWR};

} // namespace

ProcessSignals::ProcessSignals(Notification& stop, Bell& hangUp) : threadM(stop, &hangUp) {
    for (auto const signal : ignored) {
        ignore(signal);
    }
    for (int signal = SIGRTMIN; signal <= SIGRTMAX; ++signal) {
        ignore(signal);
    }
}

ProcessSignals::~ProcessSignals() {
    for (auto const& before : beforeM) {
        ::sigaction(before.signal, &before.action, nullptr);
    }
}

void ProcessSignals::ignore(int signal) {
    struct sigaction action = {};
    action.sa_handler = SIG_IGN;
    Before before = {signal, {}};
    if (::sigaction(signal, &action, &before.action) == 0) {
        beforeM.push_back(before);
    }
}

} // namespace host
