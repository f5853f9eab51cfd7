// Takes plug-ins through their life: initialised, installed and started before the first batch,
// shut down and uninstalled after the last.
#pragma once

#include "BAS/Status.h"

#include <vector>

namespace BAS {
class LogSink;
}
namespace PLG {
class StdPlugIn;
}

namespace host {

class LifeCycle {
public:
    // Plug-ins in the order in which they start; they stay the caller's. What goes wrong at their
    // end goes to the log.
    LifeCycle(std::vector<PLG::StdPlugIn*> plugIns, BAS::LogSink& log)
        : plugInsM(std::move(plugIns)), logM(log) {}
    // Stops what was started.
    ~LifeCycle();
    LifeCycle(LifeCycle const&) = delete;
    LifeCycle& operator=(LifeCycle const&) = delete;

    // Takes every plug-in through one operation before the next operation begins. A plug-in of
    // which one fails or throws is taken no further. Returns what went wrong.
    std::vector<BAS::Status> start();

private:
    std::vector<PLG::StdPlugIn*> plugInsM;
    BAS::LogSink& logM;
    // In the order in which that was done.
    std::vector<PLG::StdPlugIn*> installedM;
    std::vector<PLG::StdPlugIn*> startedM;
};

} // namespace host
