#include "Host.h"

#include "BAS/LogSink.h"
#include "ExceptionText.h"
#include "MessageCatalogue.h"
#include "PLG/FunctionPlugIn.h"
#include "StartFailure.h"

#include <fmt/format.h>

#include <algorithm>
#include <thread>

namespace host {

Host::Host(Registry registry, ModuleLoader loader, BAS::LogSink& log)
    : registryM(std::move(registry)), loaderM(std::move(loader)), logM(log) {
    BAS::RegisteredObject::bindRegistry(registryM.root.get(),
                                        registryM.configuration.directory.string());
    BAS::RegisteredObject::bindProcessLog(&logM);
}

Host::~Host() {
    lifeCycleM.reset();
    while (!objectsM.empty()) {
        objectsM.pop_back();
    }
    BAS::RegisteredObject::bindProcessLog(nullptr);
    BAS::RegisteredObject::bindRegistry(nullptr, {});
}

void Host::start() {
    buildDataPool();
    throwIfAnyProblem();
    buildPipelines();
    throwIfAnyProblem();
    buildFunctions();
    throwIfAnyProblem();
    startLifeCycle();
    throwIfAnyProblem();
    logM.write(makeStatus(BAS::Status::info, {}, "MSG_STARTED",
                          {std::to_string(registryM.configuration.dataPool.size()),
                           std::to_string(pipelinesM.size())}));
}

void Host::buildDataPool() {
    for (auto const& module : registryM.configuration.dataPool) {
        load(module, ModuleKind::data);
    }
}

void Host::buildPipelines() {
    for (auto const& configuration : registryM.configuration.pipelines) {
        try {
            auto pipeline = std::make_unique<PipelineRunner>(configuration, logM);
            objectsM.push_back(pipeline->makeRegisteredObject());
            pipelinesM.push_back(std::move(pipeline));
        } catch (StartFailure const& failure) {
            problemsM.insert(problemsM.end(), failure.problems.begin(), failure.problems.end());
        } catch (BAS::Status& status) {
            status.setObjectName(configuration.registeredName);
            problemsM.push_back(status);
        }
    }
}

void Host::buildFunctions() {
    for (auto const& pipeline : pipelinesM) {
        for (auto const& module : pipeline->configuration().functions) {
            // The loader saw to the kind.
            if (auto* const function =
                    dynamic_cast<PLG::FunctionPlugIn*>(load(module, ModuleKind::function))) {
                pipeline->addFunction(*function);
            }
        }
    }
}

void Host::startLifeCycle() {
    std::vector<PLG::StdPlugIn*> plugIns;
    for (auto const& object : objectsM) {
        if (auto* const plugIn = dynamic_cast<PLG::StdPlugIn*>(object.get())) {
            plugIns.push_back(plugIn);
        }
    }
    lifeCycleM.emplace(std::move(plugIns), logM);
    try {
        lifeCycleM->start();
    } catch (BAS::Status const& status) {
        problemsM.push_back(status);
    }
}

BAS::RegisteredObject* Host::load(ModuleConfiguration const& module, ModuleKind kind) {
    try {
        objectsM.push_back(loaderM.load(module, kind));
        return objectsM.back().get();
    } catch (BAS::Status const& status) {
        problemsM.push_back(status);
    } catch (...) {
        problemsM.push_back(makeStatus(BAS::Status::critical, module.registeredName,
                                       "ERR_MODULE_NOT_USABLE",
                                       {module.moduleName, currentExceptionText()}));
    }
    return nullptr;
}

void Host::throwIfAnyProblem() const {
    if (!problemsM.empty()) {
        throw StartFailure{problemsM};
    }
}

void Host::runPipelines() {
    std::vector<std::jthread> threads;
    threads.reserve(pipelinesM.size());
    for (auto const& pipeline : pipelinesM) {
        threads.emplace_back([&pipeline] { pipeline->run(); });
    }
    threads.clear(); // waits for all of them
    for (auto const& pipeline : pipelinesM) {
        logSummary(*pipeline);
    }
}

void Host::logSummary(PipelineRunner const& pipeline) const {
    auto const& counters = pipeline.counters();
    logM.write(makeStatus(BAS::Status::notice, pipeline.configuration().registeredName,
                          "MSG_PIPELINE_SUMMARY",
                          {std::to_string(counters.read), std::to_string(counters.details),
                           std::to_string(counters.rejected), std::to_string(counters.batches),
                           fmt::format("{:.3f}", counters.seconds)}));
}

CommandResult Host::execute(Command const& command) {
    auto result = executeCommand(command, lockFor(command.update.name()));
    logM.write(result.isHandled ? makeStatus(BAS::Status::info, result.object, "MSG_COMMAND_RESULT",
                                             {resultText(result)})
                                : makeStatus(BAS::Status::error, result.object,
                                             "ERR_COMMAND_REJECTED", {resultText(result)}));
    return result;
}

std::mutex* Host::lockFor(BAS::String const& object) const {
    for (auto const& pipeline : pipelinesM) {
        if (object.view().starts_with(pipeline->configuration().registeredName + ".")) {
            return &pipeline->lock();
        }
    }
    return nullptr;
}

bool Host::hasFailed() const {
    return std::any_of(pipelinesM.begin(), pipelinesM.end(),
                       [](auto const& pipeline) { return pipeline->hasFailed(); });
}

bool Host::hasFaults() const {
    return std::any_of(pipelinesM.begin(), pipelinesM.end(), [](auto const& pipeline) {
        return pipeline->counters().rejected > 0 || pipeline->counters().faults > 0;
    });
}

} // namespace host
