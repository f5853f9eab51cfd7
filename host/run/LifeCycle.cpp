#include "run/LifeCycle.h"

#include "BAS/LogSink.h"
#include "PLG/StdPlugIn.h"
#include "base/Failures.h"
#include "base/MessageCatalogue.h"

#include <optional>

namespace host {

namespace {

using Operation = bool (PLG::StdPlugIn::*)();

// What went wrong, if anything did.
std::optional<BAS::Status> perform(PLG::StdPlugIn& plugIn, char const* name, Operation operation) {
    std::string reason;
    try {
        if ((plugIn.*operation)()) {
            return std::nullopt;
        }
        reason = statusText(plugIn.status());
    } catch (...) {
        reason = currentExceptionText();
    }
    return makeStatus(BAS::Status::critical, plugIn.name(), "ERR_LIFE_CYCLE", {name, reason});
}

} // namespace

std::vector<BAS::Status> LifeCycle::start() {
    // The plug-ins with which an operation succeeded are kept if something must undo it.
    struct Step {
        char const* name;
        Operation operation;
        std::vector<PLG::StdPlugIn*> LifeCycle::*done;
    };
    static constexpr Step steps[] = {
        {"init", &PLG::StdPlugIn::init, nullptr},
        {"finalInit", &PLG::StdPlugIn::finalInit, nullptr},
        {"install", &PLG::StdPlugIn::install, &LifeCycle::installedM},
        {"startup", &PLG::StdPlugIn::startup, &LifeCycle::startedM},
    };
    std::vector<BAS::Status> problems;
    auto remaining = plugInsM;
    for (auto const& step : steps) {
        std::vector<PLG::StdPlugIn*> succeeded;
        for (auto* const plugIn : remaining) {
            if (auto const problem = perform(*plugIn, step.name, step.operation)) {
                problems.push_back(*problem);
            } else {
                succeeded.push_back(plugIn);
            }
        }
        remaining = succeeded;
        if (step.done != nullptr) {
            this->*step.done = std::move(succeeded);
        }
    }
    return problems;
}

LifeCycle::~LifeCycle() {
    struct Step {
        char const* name;
        Operation operation;
        std::vector<PLG::StdPlugIn*> const& plugIns;
    };
    Step const steps[] = {
        {"shutdown", &PLG::StdPlugIn::shutdown, startedM},
        {"uninstall", &PLG::StdPlugIn::uninstall, installedM},
    };
    for (auto const& step : steps) {
        for (auto plugIn = step.plugIns.rbegin(); plugIn != step.plugIns.rend(); ++plugIn) {
            if (auto const problem = perform(**plugIn, step.name, step.operation)) {
                logM.write(*problem);
            }
        }
    }
}

} // namespace host
