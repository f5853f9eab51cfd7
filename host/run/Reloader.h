// Has data modules read their data again, in a thread of its own, one reload after the other. The
// new data are returned to the calling thread, which has the modules take them over.
#pragma once

#include "BAS/Status.h"
#include "DAT/Reloadable.h"
#include "base/Bell.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>
#include <vector>

namespace host {

// A data module with its name.
struct ReloadableModule {
    BAS::String name; // registered
    DAT::Reloadable* module;
};

struct Reload {
    BAS::String object; // which was commanded to reload; registered
    // All of them read one state of each database.
    std::vector<ReloadableModule> modules;
    bool isForced = false; // accepts tables that have become empty
    // In the order of the modules; empty when reading failed.
    std::vector<std::unique_ptr<DAT::NewData>> newData;
    // Why it failed, with the name of the object that caused it; if set from the start, nothing is
    // read.
    std::optional<BAS::Status> failure;
    std::function<void(Reload&)> done;
};

// Only the reading happens in another thread than the caller's.
class Reloader {
public:
    Reloader() = default;
    Reloader(Reloader const&) = delete;
    Reloader& operator=(Reloader const&) = delete;

    // The modules stay the caller's and must outlive the reloader.
    void begin(Reload reload);
    // Readable when handBack has something to do.
    int descriptor() const noexcept { return readBellM.descriptor(); }
    // Calls done for each reload that is read, in the order in which they began.
    void handBack();
    bool isBusy() const noexcept { return !unfinishedM.empty(); }
    // Lets unfinished reloads fail. False when the module that reads hasn't returned within the
    // timeout: then only giveUp and the end of the process remain, as the reader's thread can't be
    // ended.
    bool stop(std::chrono::seconds timeout);
    // Calls done for all unfinished reloads, as failed, while the reader's thread goes on.
    void giveUp();

private:
    void readAll(std::stop_token const& stop);
    bool readNext(std::stop_token const& stop);
    static void read(Reload& reload, std::stop_token const& stop);

    Bell readBellM;
    std::mutex lockM;
    std::condition_variable_any changedM;                // what the lock guards
    std::deque<std::shared_ptr<Reload>> waitingReloadsM; // guarded by the lock
    std::deque<std::shared_ptr<Reload>> readReloadsM;    // guarded by the lock
    bool isReaderAtWorkM = false;                        // guarded by the lock
    std::deque<std::shared_ptr<Reload>> unfinishedM;     // begun and not handed back, in order
    std::jthread readerM;                                // from the first reload on
};

} // namespace host
