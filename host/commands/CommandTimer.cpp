#include "commands/CommandTimer.h"

#include "BAS/LogSink.h"
#include "base/ExitCode.h"
#include "base/MessageCatalogue.h"

#include <fmt/format.h>

#include <unistd.h>

#include <algorithm>

namespace host {

CommandTimer::CommandTimer(BAS::LogSink& log, Notification const& stop,
                           std::chrono::seconds stopTimeout, std::chrono::milliseconds longTime)
    : logM(log), stopM(stop), stopTimeoutM(stopTimeout), longTimeM(longTime),
      threadM([this] { watch(); }) {
}

CommandTimer::~CommandTimer() {
    endedM.set();
    threadM.join();
}

std::shared_ptr<CommandTimer::Turn> CommandTimer::begin(std::string object, std::string text,
                                                        std::function<void()> removeTraces) {
    logM.write(makeStatus(BAS::Status::info, object, "MSG_COMMAND_STARTED", {text}));
    auto const running = [&] {
        std::lock_guard const guard(guardM);
        runningM.push_back({std::move(object), std::move(text), std::move(removeTraces),
                            std::chrono::steady_clock::now()});
        return std::prev(runningM.end());
    }();
    changedM.ring();
    return std::make_shared<Turn>(*this, running);
}

void CommandTimer::end(std::list<Running>::iterator running) {
    std::lock_guard const guard(guardM);
    runningM.erase(running);
}

void CommandTimer::watch() {
    while (!endedM.isSet()) {
        auto deadline = reportLong();
        if (stopM.isSet()) {
            auto const last = endAtLast();
            deadline = !deadline || (last && *last < *deadline) ? last : deadline;
        }
        waitForAny(
            {changedM.descriptor(), endedM.descriptor(), stopM.isSet() ? -1 : stopM.descriptor()},
            deadline);
        changedM.take();
    }
}

Deadline CommandTimer::reportLong() {
    std::lock_guard const guard(guardM);
    auto const now = std::chrono::steady_clock::now();
    Deadline next;
    for (auto& running : runningM) {
        if (running.isLong) {
            continue;
        }
        running.isLong = now >= running.start + longTimeM;
        if (running.isLong) {
            logM.write(makeStatus(
                BAS::Status::warning, running.object, "ERR_COMMAND_LONG",
                {running.text,
                 fmt::format("{:g}", std::chrono::duration<double>(longTimeM).count())}));
        } else if (!next || running.start + longTimeM < *next) {
            next = running.start + longTimeM;
        }
    }
    return next;
}

Deadline CommandTimer::endAtLast() {
    std::lock_guard const guard(guardM);
    auto const now = std::chrono::steady_clock::now();
    stopTimeM = stopTimeM.value_or(now);
    auto const running = std::find_if(runningM.begin(), runningM.end(), [](auto const& each) {
        return static_cast<bool>(each.removeTraces);
    });
    if (running == runningM.end()) {
        return std::nullopt;
    }
    auto const deadline = std::max(*stopTimeM, running->start) + stopTimeoutM;
    if (now < deadline) {
        return deadline;
    }
    logM.write(makeStatus(BAS::Status::critical, running->object, "ERR_COMMAND_GIVEN_UP",
                          {running->text, std::to_string(stopTimeoutM.count())}));
    running->removeTraces();
    // Nothing waits in a buffer: logs and results are written at once.
    ::_exit(inputOrOutputFailed);
}

} // namespace host
