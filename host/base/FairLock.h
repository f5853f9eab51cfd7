// A mutex that is locked in the order of the calls, so that two threads take turns, which
// std::mutex doesn't guarantee. For std::lock_guard and std::unique_lock.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace host {

class FairLock {
public:
    void lock() {
        std::unique_lock guard(guardM);
        auto const ticket = nextTicketM++;
        turnM.wait(guard, [&] { return ticket == servedM; });
    }
    void unlock() {
        {
            std::lock_guard const guard(guardM);
            ++servedM;
        }
        turnM.notify_all();
    }

private:
    std::mutex guardM;
    std::condition_variable turnM;
    std::uint64_t nextTicketM = 0;
    std::uint64_t servedM = 0;
};

} // namespace host
