// Watches over the commands in progress, in a thread of its own: logs when one starts, and when it
// takes long; and when one keeps the host from its end for too long, ends the process.
#pragma once

#include "base/Bell.h"
#include "base/Notification.h"
#include "base/Poll.h"

#include <chrono>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace BAS {
class LogSink;
}

namespace host {

class CommandTimer {
    struct Running;

public:
    // A command in progress, as long as the object lives.
    class Turn {
    public:
        Turn(CommandTimer& timer, std::list<Running>::iterator running)
            : timerM(timer), runningM(running) {}
        Turn(Turn const&) = delete;
        Turn& operator=(Turn const&) = delete;
        ~Turn() { timerM.end(runningM); }

    private:
        CommandTimer& timerM;
        std::list<Running>::iterator runningM;
    };

    static constexpr std::chrono::milliseconds usualLongTime{10'000};

    // Log and stop must outlive the timer. A command that has run for the long time is logged.
    CommandTimer(BAS::LogSink& log, Notification const& stop, std::chrono::seconds stopTimeout,
                 std::chrono::milliseconds longTime = usualLongTime);
    CommandTimer(CommandTimer const&) = delete;
    CommandTimer& operator=(CommandTimer const&) = delete;
    ~CommandTimer();

    // The command of that object and text starts. A process that ends in its middle calls
    // removeTraces, in another thread; without it the command doesn't keep the host from its end.
    std::shared_ptr<Turn> begin(std::string object, std::string text,
                                std::function<void()> removeTraces = {});

private:
    struct Running {
        std::string object;
        std::string text;
        std::function<void()> removeTraces;
        std::chrono::steady_clock::time_point start;
        bool isLong = false; // and that is logged
    };

    void end(std::list<Running>::iterator running);
    void watch();
    // Both return when there is something to do next.
    Deadline reportLong();
    Deadline endAtLast();

    BAS::LogSink& logM;
    Notification const& stopM;
    std::chrono::seconds stopTimeoutM;
    std::chrono::milliseconds longTimeM;
    Bell changedM;
    Notification endedM;
    std::mutex guardM;
    std::list<Running> runningM; // guarded
    std::optional<std::chrono::steady_clock::time_point> stopTimeM;
    std::thread threadM;
};

} // namespace host
