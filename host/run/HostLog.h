// The process log as the objects of a host see it: what they report goes to the log of the program,
// with hints for names that aren't there. While an object is only tried, it can be held back. Any
// thread may write.
#pragma once

#include "BAS/LogSink.h"
#include "run/NameHints.h"

#include <mutex>
#include <optional>
#include <vector>

namespace host {

class HostLog : public BAS::LogSink {
public:
    // Both must outlive the log.
    HostLog(BAS::LogSink& log, NameHints const& hints) : logM(log), hintsM(hints) {}

    void write(BAS::Status const& status) override;

    // Keeps what comes from now on, until it is passed on or dropped.
    void hold();
    void passOn();
    void drop();

private:
    std::optional<std::vector<BAS::Status>> takeHeld();

    BAS::LogSink& logM;
    NameHints const& hintsM;
    std::mutex lockM;
    std::optional<std::vector<BAS::Status>> heldM; // guarded by the lock
};

} // namespace host
