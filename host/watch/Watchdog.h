// Gives the service manager signs of life from a thread of its own: while the host starts, that the
// start goes on; from then on how fast it is, and that it lives, until a plug-in has had one batch
// for too long. Waiting for a lock, a command, an input or a disk is no reason to be ended. A batch
// that takes too long is logged, with a service manager or without.
#pragma once

#include "base/Notification.h"
#include "run/Host.h"
#include "watch/RateMeter.h"
#include "watch/ServiceManager.h"

#include <chrono>
#include <map>
#include <mutex>
#include <string>
#include <thread>

namespace host {

class Watchdog {
public:
    // Both must outlive the watchdog; stop is set when a signal asks for the end.
    Watchdog(ServiceManager const& manager, Notification const& stop);
    Watchdog(Watchdog const&) = delete;
    Watchdog& operator=(Watchdog const&) = delete;
    ~Watchdog();

    // The host is started, until release.
    void watch(Host const& host);
    void release();

private:
    void work();
    void giveSign();
    bool findStuck(Host const& host);
    std::string rateText(Host const& host);

    ServiceManager const& managerM;
    Notification const& stopM;
    std::chrono::milliseconds periodM;
    Notification endM;
    std::mutex lockM; // of what follows
    enum { starting, running, ending } stateM = starting;
    Host const* hostM = nullptr; // while it runs
    std::map<PipelineRunner const*, RateMeter> ratesM;
    // Pipelines that are stuck, and since when.
    std::map<PipelineRunner const*, std::chrono::steady_clock::time_point> stuckM;
    std::jthread threadM;
};

// A host that the watchdog watches as long as the object lives.
class WatchedHost {
public:
    WatchedHost(Watchdog& watchdog, Host const& host) : watchdogM(watchdog) {
        watchdogM.watch(host);
    }
    WatchedHost(WatchedHost const&) = delete;
    WatchedHost& operator=(WatchedHost const&) = delete;
    ~WatchedHost() { watchdogM.release(); }

private:
    Watchdog& watchdogM;
};

} // namespace host
