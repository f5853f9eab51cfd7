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
    // Plug-ins in the order in which they start; they stay the caller's. What fails when they stop
    // is logged.
    LifeCycle(std::vector<PLG::StdPlugIn*> plugIns, BAS::LogSink& log)
        : plugInsM(std::move(plugIns)), logM(log) {}
    // Stops what was started.
    ~LifeCycle();
    LifeCycle(LifeCycle const&) = delete;
    LifeCycle& operator=(LifeCycle const&) = delete;

    // Performs each operation on all plug-ins before the next one. A plug-in whose operation fails
    // or throws is skipped from then on. Returns the failures.
    std::vector<BAS::Status> start();

private:
    std::vector<PLG::StdPlugIn*> plugInsM;
    BAS::LogSink& logM;
    // In the order of installation.
    std::vector<PLG::StdPlugIn*> installedM;
    std::vector<PLG::StdPlugIn*> startedM;
};

} // namespace host
