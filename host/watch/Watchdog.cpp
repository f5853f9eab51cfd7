#include "watch/Watchdog.h"

#include "BAS/LogSink.h"
#include "PLG/FunctionPlugIn.h"
#include "base/MessageCatalogue.h"
#include "base/Poll.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace host {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr milliseconds longestPeriod = seconds(5);
// How much longer a start may take from each sign of life on; many times the longest period.
constexpr std::chrono::microseconds startExtension = seconds(60);

// Several signs of life before the service manager loses its patience.
milliseconds periodOf(ServiceManager const& manager) {
    auto const time = manager.watchdogTime();
    return time ? std::min(longestPeriod, std::chrono::duration_cast<milliseconds>(*time / 4))
                : longestPeriod;
}

} // namespace

Watchdog::Watchdog(ServiceManager const& manager, Notification const& stop)
    : managerM(manager), stopM(stop), periodM(periodOf(manager)) {
    giveSign();
    threadM = std::jthread([this] { work(); });
}

Watchdog::~Watchdog() {
    endM.set();
    threadM.join();
}

void Watchdog::watch(Host const& host) {
    std::lock_guard const guard(lockM);
    stateM = running;
    hostM = &host;
    managerM.tell("READY=1\nSTATUS=started");
}

void Watchdog::release() {
    std::lock_guard const guard(lockM);
    stateM = ending;
    hostM = nullptr;
    managerM.tell("STOPPING=1\nSTATUS=ending");
}

void Watchdog::work() {
    bool isStopTold = false;
    while (!endM.isSet()) {
        if (stopM.isSet() && !std::exchange(isStopTold, true)) {
            managerM.tell("STOPPING=1\nSTATUS=finishing the batches in progress");
        }
        giveSign();
        waitForAny({endM.descriptor(), isStopTold ? -1 : stopM.descriptor()},
                   Clock::now() + periodM);
    }
}

void Watchdog::giveSign() {
    std::lock_guard const guard(lockM);
    switch (stateM) {
    case starting:
        managerM.tell(
            fmt::format("STATUS=starting\nEXTEND_TIMEOUT_USEC={}", startExtension.count()));
        return;
    case running:
        if (findStuck(*hostM)) {
            managerM.tell("STATUS=" + rateText(*hostM) + ", stuck in a batch");
            return;
        }
        // Again, since the first message may not have fitted into the service manager's queue.
        managerM.tell((stopM.isSet() ? "WATCHDOG=1\nSTATUS=" : "READY=1\nWATCHDOG=1\nSTATUS=") +
                      rateText(*hostM));
        return;
    case ending:
        managerM.tell("WATCHDOG=1");
    }
}

// Logs each batch once when it has taken too long, and once when it is done.
bool Watchdog::findStuck(Host const& host) {
    auto const longest = seconds(host.configuration().longestBatchSeconds);
    for (auto const& pipeline : host.pipelines()) {
        auto const batch = pipeline->batchAtHand();
        auto const known = stuckM.find(pipeline.get());
        auto const name = BAS::String(pipeline->configuration().registeredName);
        if (known != stuckM.end() && (!batch || batch->since != known->second)) {
            stuckM.erase(known);
            host.log().write(makeStatus(BAS::Status::notice, name, "MSG_BATCH_DONE", {}));
        }
        auto const taken = batch ? Clock::now() - batch->since : Clock::duration(0);
        if (taken > longest && stuckM.emplace(pipeline.get(), batch->since).second) {
            host.log().write(
                makeStatus(BAS::Status::critical, batch->function->name(), "ERR_BATCH_STUCK",
                           {std::to_string(std::chrono::duration_cast<seconds>(taken).count()),
                            std::to_string(longest.count())}));
        }
    }
    return !stuckM.empty();
}

std::string Watchdog::rateText(Host const& host) {
    double perSecond = 0;
    std::uint64_t read = 0;
    for (auto const& pipeline : host.pipelines()) {
        auto const count = pipeline->counters().read;
        auto& rate = ratesM[pipeline.get()];
        rate.add(Clock::now(), count);
        perSecond += rate.perSecond();
        read += count;
    }
    return fmt::format("{:.0f} EDRs/s, {} EDRs read", perSecond, read);
}

} // namespace host
