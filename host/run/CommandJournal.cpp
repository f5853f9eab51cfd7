#include "run/CommandJournal.h"

namespace host {

std::uint64_t CommandJournal::begin(CommandResult const& begun) {
    std::lock_guard const guard(lockM);
    inProgressM[++lastNumberM] = {begun, std::chrono::system_clock::now()};
    changesM.ring();
    return lastNumberM;
}

void CommandJournal::end(std::uint64_t number, CommandResult const& result) {
    std::lock_guard const guard(lockM);
    inProgressM.erase(number);
    answeredM.push_back({result, std::chrono::system_clock::now()});
    if (answeredM.size() > mostAnswered) {
        answeredM.pop_front();
    }
    changesM.ring();
}

std::vector<JournalEntry> CommandJournal::inProgress() const {
    std::lock_guard const guard(lockM);
    std::vector<JournalEntry> entries;
    for (auto const& [number, entry] : inProgressM) {
        entries.push_back(entry);
    }
    return entries;
}

std::vector<JournalEntry> CommandJournal::answered() const {
    std::lock_guard const guard(lockM);
    return {answeredM.begin(), answeredM.end()};
}

} // namespace host
