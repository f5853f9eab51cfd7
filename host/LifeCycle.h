// Takes plug-ins through their life: initialised, installed and started before the first batch,
// shut down and uninstalled after the last.
#pragma once

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

    // Takes every plug-in through one operation before the next operation begins. Throws a
    // BAS::Status at the first that fails or throws.
    void start();

private:
    std::vector<PLG::StdPlugIn*> plugInsM;
    BAS::LogSink& logM;
    // How many plug-ins were installed and how many started.
    std::size_t installedM = 0;
    std::size_t startedM = 0;
};

} // namespace host
