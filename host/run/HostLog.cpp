#include "run/HostLog.h"

#include <utility>

namespace host {

void HostLog::write(BAS::Status const& status) {
    auto const shown = hintsM.withHint(status);
    {
        std::lock_guard const guard(lockM);
        if (heldM) {
            heldM->push_back(shown);
            return;
        }
    }
    logM.write(shown);
}

void HostLog::hold() {
    std::lock_guard const guard(lockM);
    heldM.emplace();
}

void HostLog::passOn() {
    auto const held = takeHeld();
    for (auto const& status : held.value_or(std::vector<BAS::Status>())) {
        logM.write(status);
    }
}

void HostLog::drop() {
    takeHeld();
}

std::optional<std::vector<BAS::Status>> HostLog::takeHeld() {
    std::lock_guard const guard(lockM);
    return std::exchange(heldM, std::nullopt);
}

} // namespace host
