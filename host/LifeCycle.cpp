#include "LifeCycle.h"

#include "BAS/LogSink.h"
#include "ExceptionText.h"
#include "MessageCatalogue.h"
#include "PLG/StdPlugIn.h"

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

void LifeCycle::start() {
    // What counts the plug-ins that have an operation behind them, if something must undo it.
    struct Step {
        char const* name;
        Operation operation;
        std::size_t LifeCycle::*done;
    };
    static constexpr Step steps[] = {
        {"init", &PLG::StdPlugIn::init, nullptr},
        {"finalInit", &PLG::StdPlugIn::finalInit, nullptr},
        {"install", &PLG::StdPlugIn::install, &LifeCycle::installedM},
        {"startup", &PLG::StdPlugIn::startup, &LifeCycle::startedM},
    };
    for (auto const& step : steps) {
        for (auto* const plugIn : plugInsM) {
            if (auto const problem = perform(*plugIn, step.name, step.operation)) {
                throw BAS::Status(*problem);
            }
            if (step.done != nullptr) {
                ++(this->*step.done);
            }
        }
    }
}

LifeCycle::~LifeCycle() {
    struct Step {
        char const* name;
        Operation operation;
        std::size_t count;
    };
    Step const steps[] = {
        {"shutdown", &PLG::StdPlugIn::shutdown, startedM},
        {"uninstall", &PLG::StdPlugIn::uninstall, installedM},
    };
    for (auto const& step : steps) {
        for (auto i = step.count; i > 0; --i) {
            if (auto const problem = perform(*plugInsM[i - 1], step.name, step.operation)) {
                logM.write(*problem);
            }
        }
    }
}

} // namespace host
