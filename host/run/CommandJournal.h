// Which commands are in progress, and what became of the last ones, for those who watch the host.
// Any thread.
#pragma once

#include "base/Bell.h"
#include "commands/CommandExecution.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <vector>

namespace host {

// A command with the time at which it was taken up or, once it is done, answered.
struct JournalEntry {
    CommandResult result;
    std::chrono::system_clock::time_point time;
};

class CommandJournal {
public:
    static constexpr std::size_t mostAnswered = 10;

    CommandJournal() = default;
    CommandJournal(CommandJournal const&) = delete;
    CommandJournal& operator=(CommandJournal const&) = delete;

    // Returns the number under which the command is in progress.
    std::uint64_t begin(CommandResult const& begun);
    void end(std::uint64_t number, CommandResult const& result);

    // From the first to the last.
    std::vector<JournalEntry> inProgress() const;
    std::vector<JournalEntry> answered() const;
    // Rung when something changed; for one watcher.
    Bell& changes() noexcept { return changesM; }

private:
    mutable std::mutex lockM;
    std::uint64_t lastNumberM = 0;
    std::map<std::uint64_t, JournalEntry> inProgressM;
    std::deque<JournalEntry> answeredM;
    Bell changesM;
};

} // namespace host
