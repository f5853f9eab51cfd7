// Everything that a registry file configures, running: data modules, pipelines and their plug-ins.
// The host owns all objects and destroys them in the reverse order of their creation. There is one
// at a time, since registry and process log are the whole process's.
#pragma once

#include "BAS/RegisteredObject.h"
#include "registry/Registry.h"
#include "run/DataPool.h"
#include "run/HostLog.h"
#include "run/LifeCycle.h"
#include "run/ModuleLoader.h"
#include "run/PipelineRunner.h"

#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace host {

// An object of the host, with what it is.
struct HostedObject {
    std::unique_ptr<BAS::RegisteredObject> object;
    std::string_view kind;
    std::string moduleName; // of a module
};

class Host {
public:
    // The log stays the caller's and becomes the process log. Logs of the pipelines take what is at
    // least that severe.
    Host(Registry registry, ModuleLoader loader, BAS::LogSink& log,
         BAS::Status::Severity leastSeverity);
    Host(Host const&) = delete;
    Host& operator=(Host const&) = delete;
    ~Host();

    // Builds and starts everything, data modules first. Throws a StartFailure with all problems
    // that don't follow from each other: those of the directories, else those of the data modules,
    // else those of the pipelines' descriptions and logs, else those of the plug-ins.
    void start();
    // Starts as much as possible and returns all problems. A module that refers to an unusable data
    // module is left out, so that an unreachable database is one problem. A plug-in that fails for
    // an EDR field or block is started once more, and each that it misses is a problem.
    std::vector<BAS::Status> check();

    HostConfiguration const& configuration() const noexcept { return registryM.configuration; }
    std::vector<std::unique_ptr<PipelineRunner>> const& pipelines() const noexcept {
        return pipelinesM;
    }
    BAS::LogSink& log() const noexcept { return logM; }
    // Loads it. Throws a BAS::Status when it can't be had.
    StreamLibrary& streamLibrary() const { return loaderM.loadStreamLibrary(); }

    // In the order in which they were built.
    std::vector<HostedObject> const& objects() const noexcept { return objectsM; }
    // Only after the start.
    DataPool& dataPool() const noexcept { return *dataPoolM; }

    // Once its directories are its own, too.
    void logStarted() const;
    void logSummaries() const;
    // Opens the logs of the pipelines again. Any thread.
    void reopenLogs();

    // An input, a reject file or a pipeline's log failed.
    bool hasFailed() const;
    // A line was rejected, or an exception left a plug-in.
    bool hasFaults() const;

private:
    void checkDirectories();
    // Require, which throws a BAS::Status, is about a directory of the object of that name.
    void checkDirectory(BAS::String const& user, std::function<void()> const& require);
    void buildDataPool();
    void buildPipelines();
    void buildFunctions();
    void startLifeCycle();
    void warnOfUnreadKeys();
    BAS::RegisteredObject* load(ModuleConfiguration const& module, ModuleKind kind);
    // Throws a ModuleFailure.
    BAS::RegisteredObject* build(ModuleConfiguration const& module, ModuleKind kind);
    BAS::RegisteredObject* loadForCheck(PipelineRunner& pipeline,
                                        ModuleConfiguration const& module);
    std::vector<BAS::Status> missingNames(PipelineRunner& pipeline,
                                          ModuleConfiguration const& module) const;
    bool isLeftOut(ModuleConfiguration const& module);
    EDR::Description const* descriptionOf(BAS::String const& object) const;

    // The start, step by step; each adds to the problems.
    static constexpr void (Host::*stagesM[])() = {&Host::checkDirectories, &Host::buildDataPool,
                                                  &Host::buildPipelines,   &Host::buildFunctions,
                                                  &Host::startLifeCycle,   &Host::warnOfUnreadKeys};

    Registry registryM;
    ModuleLoader loaderM;
    NameHints hintsM;
    mutable HostLog logM;
    BAS::Status::Severity leastSeverityM;
    bool isCheckedM = false; // rather than run
    std::vector<std::unique_ptr<PipelineRunner>> pipelinesM;
    std::vector<HostedObject> objectsM; // in the order of creation
    DataPool* dataPoolM = nullptr;      // one of the objects
    std::optional<LifeCycle> lifeCycleM;
    std::vector<BAS::Status> problemsM; // of the start
    std::vector<BAS::String> absentM;   // references to unusable data modules
};

} // namespace host
