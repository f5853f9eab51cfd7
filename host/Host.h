// Everything that a registry file configures, alive: data modules, pipelines and their plug-ins.
// The host owns all objects and destroys them in the reverse order of their creation. There is one
// at a time, since registry and process log are the whole process's.
#pragma once

#include "BAS/RegisteredObject.h"
#include "Command.h"
#include "LifeCycle.h"
#include "ModuleLoader.h"
#include "PipelineRunner.h"
#include "Registry.h"

#include <memory>
#include <optional>
#include <vector>

namespace host {

class Host {
public:
    // The log stays the caller's and becomes the process log.
    Host(Registry registry, ModuleLoader loader, BAS::LogSink& log);
    Host(Host const&) = delete;
    Host& operator=(Host const&) = delete;
    ~Host();

    // Builds and starts everything, data modules first. Throws a StartFailure with all problems
    // that don't follow from each other: those of the data modules, else those of the pipelines'
    // descriptions and logs, else those of the plug-ins.
    void start();

    // Runs every pipeline in a thread of its own until all inputs have ended, and logs a summary.
    void runPipelines();

    // Hands a command to its object and logs the result. Any thread.
    CommandResult execute(Command const& command);

    // An input, a reject file or a pipeline's log failed.
    bool hasFailed() const;
    // A line was rejected, or an exception left a plug-in.
    bool hasFaults() const;

private:
    void buildDataPool();
    void buildPipelines();
    void buildFunctions();
    void startLifeCycle();
    void logSummary(PipelineRunner const& pipeline) const;
    BAS::RegisteredObject* load(ModuleConfiguration const& module, ModuleKind kind);
    void throwIfAnyProblem() const;
    std::mutex* lockFor(BAS::String const& object) const;

    Registry registryM;
    ModuleLoader loaderM;
    BAS::LogSink& logM;
    std::vector<std::unique_ptr<PipelineRunner>> pipelinesM;
    std::vector<std::unique_ptr<BAS::RegisteredObject>> objectsM; // in the order of creation
    std::optional<LifeCycle> lifeCycleM;
    std::vector<BAS::Status> problemsM; // of the start
};

} // namespace host
