#include "base/FairLock.h"

#include "HostProcess.h"

#include <gtest/gtest.h>

#include <sys/syscall.h>

#include <atomic>
#include <fstream>

namespace {

// Whether a thread of this process waits for something.
bool isAsleep(long thread) {
    std::ifstream status("/proc/self/task/" + std::to_string(thread) + "/stat");
    std::string text;
    std::getline(status, text);
    return text.find(") S ") != std::string::npos;
}

TEST(FairLock, GoesToWhoWaitsBeforeItsHolderHasItAgain) {
    for (int round = 0; round < 20; ++round) {
        host::FairLock lock;
        std::atomic<long> waiting{0};
        std::atomic<bool> hadIt{false};
        lock.lock();
        std::jthread const other([&] {
            waiting = ::syscall(SYS_gettid);
            lock.lock();
            hadIt = true;
            lock.unlock();
        });
        ASSERT_TRUE(eventually([&] { return waiting != 0 && isAsleep(waiting); }));
        lock.unlock();
        lock.lock();
        EXPECT_TRUE(hadIt);
        lock.unlock();
    }
}

} // namespace
