#include "base/SignalThread.h"

#include "base/ExitCode.h"
#include "base/Failures.h"
#include "base/Poll.h"

#include <sys/signalfd.h>
#include <unistd.h>

namespace host {

SignalThread::SignalThread(Notification& stop, Bell* hangUp) : stopM(stop), hangUpM(hangUp) {
    sigset_t signals;
    ::sigemptyset(&signals);
    ::sigaddset(&signals, SIGTERM);
    ::sigaddset(&signals, SIGINT);
    if (hangUp != nullptr) {
        ::sigaddset(&signals, SIGHUP);
    }
    signalsM = FileDescriptor(::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
    if (!signalsM.isOpen()) {
        throw systemStatus("signalfd", errno);
    }
    ::pthread_sigmask(SIG_BLOCK, &signals, &blockedBeforeM);
    threadM = std::thread([this] { takeSignals(); });
}

SignalThread::~SignalThread() {
    endedM.set();
    threadM.join();
    ::pthread_sigmask(SIG_SETMASK, &blockedBeforeM, nullptr);
}

void SignalThread::takeSignals() {
    while (!endedM.isSet()) {
        waitForAny({signalsM.number(), endedM.descriptor()});
        signalfd_siginfo taken;
        while (::read(signalsM.number(), &taken, sizeof(taken)) == sizeof(taken)) {
            take(static_cast<int>(taken.ssi_signo));
        }
    }
}

void SignalThread::take(int signal) {
    if (signal == SIGHUP) {
        hangUpM->ring();
        return;
    }
    if (stopM.isSet()) {
        ::_exit(interrupted);
    }
    stopM.set();
}

} // namespace host
