#include "run/Host.h"

#include "BAS/LogSink.h"
#include "PLG/FunctionPlugIn.h"
#include "base/DropDirectory.h"
#include "base/Failures.h"
#include "base/MessageCatalogue.h"
#include "base/NearestName.h"
#include "commands/CommandInlet.h"

#include <fmt/format.h>

#include <algorithm>

namespace host {

namespace {

bool hasValue(BAS::RegistryEntry const& entry, BAS::String const& value) {
    return entry.value() == value ||
           std::any_of(entry.children().begin(), entry.children().end(),
                       [&](auto const& child) { return hasValue(*child, value); });
}

bool isMissingName(BAS::Status const& status) {
    auto const name = status.messageName().view();
    return name == "ERR_EDR_FIELD_NOT_FOUND" || name == "ERR_EDR_BLOCK_NOT_FOUND";
}

} // namespace

Host::Host(Registry registry, ModuleLoader loader, BAS::LogSink& log,
           BAS::Status::Severity leastSeverity)
    : registryM(std::move(registry)), loaderM(std::move(loader)),
      hintsM(registryM, [this](BAS::String const& object) { return descriptionOf(object); }),
      logM(log, hintsM), leastSeverityM(leastSeverity) {
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
    for (auto const stage : stagesM) {
        (this->*stage)();
        if (!problemsM.empty()) {
            throw StartFailure{problemsM};
        }
    }
}

void Host::logStarted() const {
    logM.write(makeStatus(BAS::Status::info, {}, "MSG_STARTED",
                          {std::to_string(registryM.configuration.dataPool.size()),
                           std::to_string(pipelinesM.size())}));
}

std::vector<BAS::Status> Host::check() {
    isCheckedM = true;
    for (auto const stage : stagesM) {
        (this->*stage)();
    }
    return problemsM;
}

void Host::checkDirectories() {
    auto const& configuration = registryM.configuration;
    checkDirectory({}, [&] {
        for (auto const& inlet : commandInlets(configuration)) {
            checkDirectory({}, [&] { requireSafe(inlet); });
        }
    });
    for (auto const& pipeline : configuration.pipelines) {
        if (pipeline.inputDirectory) {
            checkDirectory(pipeline.registeredName,
                           [&] { DropDirectory::requireUsable(*pipeline.inputDirectory); });
        }
    }
}

void Host::checkDirectory(BAS::String const& user, std::function<void()> const& require) {
    try {
        require();
    } catch (BAS::Status& status) {
        status.setObjectName(user);
        problemsM.push_back(status);
    }
}

void Host::buildDataPool() {
    auto dataPool = std::make_unique<DataPool>(registryM.root->name() + ".DataPool");
    dataPoolM = dataPool.get();
    objectsM.push_back({std::move(dataPool), "data pool", {}});
    for (auto const& module : registryM.configuration.dataPool) {
        auto* const object = load(module, ModuleKind::data);
        if (auto* const reloadable = dynamic_cast<DAT::Reloadable*>(object)) {
            dataPoolM->add({object->name(), reloadable});
        }
        if (object == nullptr) {
            // Modules refer to it by its own name or its full one.
            auto const fullName = BAS::RegisteredObject::dirName(module.registeredName);
            absentM.emplace_back(fullName.view().substr(fullName.view().rfind('.') + 1));
            absentM.push_back(fullName);
        }
    }
}

void Host::buildPipelines() {
    for (auto const& configuration : registryM.configuration.pipelines) {
        try {
            auto pipeline = std::make_unique<PipelineRunner>(configuration, logM, leastSeverityM);
            objectsM.push_back({pipeline->makeRegisteredObject(), "pipeline", {}});
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
            auto* const object =
                isCheckedM ? loadForCheck(*pipeline, module) : load(module, ModuleKind::function);
            // The loader has checked the kind.
            if (auto* const function = dynamic_cast<PLG::FunctionPlugIn*>(object)) {
                pipeline->addFunction(*function);
            }
        }
    }
}

void Host::startLifeCycle() {
    std::vector<PLG::StdPlugIn*> plugIns;
    for (auto const& each : objectsM) {
        if (auto* const plugIn = dynamic_cast<PLG::StdPlugIn*>(each.object.get())) {
            plugIns.push_back(plugIn);
        }
    }
    lifeCycleM.emplace(std::move(plugIns), logM);
    auto problems = lifeCycleM->start();
    problemsM.insert(problemsM.end(), problems.begin(), problems.end());
}

// The host doesn't know the keys of a module, so a key that the module never read may be mistyped.
void Host::warnOfUnreadKeys() {
    for (auto const& each : objectsM) {
        auto const& object = *each.object;
        auto const* const subtree = object.registry();
        if (dynamic_cast<PLG::StdPlugIn const*>(&object) == nullptr || subtree == nullptr) {
            continue;
        }
        auto const missed = subtree->namesMissed();
        std::vector<std::string_view> asked;
        asked.reserve(missed.size());
        for (auto const& name : missed) {
            asked.push_back(name.view());
        }
        for (auto const& key : subtree->children()) {
            if (!key->wasFound()) {
                logM.write(
                    makeStatus(BAS::Status::warning, object.name(), "ERR_REG_KEY_UNREAD",
                               {key->name().str(), nearestNameHint(key->name().view(), asked)}));
            }
        }
    }
}

BAS::RegisteredObject* Host::load(ModuleConfiguration const& module, ModuleKind kind) {
    try {
        return build(module, kind);
    } catch (ModuleFailure const& failure) {
        problemsM.push_back(failure);
    }
    return nullptr;
}

BAS::RegisteredObject* Host::build(ModuleConfiguration const& module, ModuleKind kind) {
    if (isLeftOut(module)) {
        return nullptr;
    }
    try {
        objectsM.push_back({loaderM.load(module, kind),
                            kind == ModuleKind::data ? "data module" : "function plug-in",
                            module.moduleName});
        return objectsM.back().object.get();
    } catch (ModuleFailure& failure) {
        if (!failure.cause.messageName().isNull()) {
            auto& arguments = failure.arguments();
            arguments[arguments.entries() - 1] = statusText(hintsM.withHint(failure.cause));
        }
        throw;
    } catch (...) {
        throw ModuleFailure{makeStatus(BAS::Status::critical, module.registeredName,
                                       "ERR_MODULE_NOT_USABLE",
                                       {module.moduleName, currentExceptionText()}),
                            {}};
    }
}

// A plug-in that copes with what it misses isn't started twice.
BAS::RegisteredObject* Host::loadForCheck(PipelineRunner& pipeline,
                                          ModuleConfiguration const& module) {
    logM.hold();
    BAS::RegisteredObject* object = nullptr;
    std::vector<BAS::Status> problems;
    try {
        object = build(module, ModuleKind::function);
    } catch (ModuleFailure const& failure) {
        if (isMissingName(failure.cause)) {
            problems = missingNames(pipeline, module);
        }
        if (!problems.empty()) {
            logM.drop(); // they say the same
        } else {
            problems.push_back(failure);
        }
    }
    logM.passOn();
    problemsM.insert(problemsM.end(), problems.begin(), problems.end());
    return object;
}

// Starts it with a factory that collects what it lacks.
std::vector<BAS::Status> Host::missingNames(PipelineRunner& pipeline,
                                            ModuleConfiguration const& module) const {
    std::vector<BAS::Status> missing;
    pipeline.collectMissing(&missing);
    try {
        loaderM.load(module, ModuleKind::function);
    } catch (...) {
        // It may miss other things, too: the next check finds them.
    }
    pipeline.collectMissing(nullptr);
    for (auto& status : missing) {
        status.setObjectName(module.registeredName);
        status = hintsM.withHint(status);
    }
    return missing;
}

// Its start would only report a known problem again.
bool Host::isLeftOut(ModuleConfiguration const& module) {
    auto const* const own = subtreeOf(registryM, module.registeredName);
    auto const absent = std::find_if(absentM.begin(), absentM.end(), [&](auto const& reference) {
        return own != nullptr && hasValue(*own, reference);
    });
    if (absent == absentM.end()) {
        return false;
    }
    logM.write(makeStatus(BAS::Status::info, module.registeredName, "MSG_MODULE_LEFT_OUT",
                          {module.moduleName, absent->str()}));
    return true;
}

EDR::Description const* Host::descriptionOf(BAS::String const& object) const {
    auto const found = std::find_if(pipelinesM.begin(), pipelinesM.end(), [&](auto const& each) {
        return object.view().starts_with(each->configuration().registeredName + ".");
    });
    return found == pipelinesM.end() ? nullptr : &(*found)->description();
}

void Host::logSummaries() const {
    for (auto const& pipeline : pipelinesM) {
        auto const counters = pipeline->counters();
        logM.write(makeStatus(
            BAS::Status::notice, pipeline->configuration().registeredName, "MSG_PIPELINE_SUMMARY",
            {std::to_string(counters.read), std::to_string(counters.details),
             std::to_string(counters.rejected), std::to_string(counters.failedInputs),
             std::to_string(counters.batches), std::to_string(counters.faults),
             fmt::format("{:.3f}", counters.seconds), std::to_string(counters.commands)}));
    }
}

void Host::reopenLogs() {
    for (auto const& pipeline : pipelinesM) {
        pipeline->reopenLog();
    }
}

bool Host::hasFailed() const {
    return std::any_of(pipelinesM.begin(), pipelinesM.end(),
                       [](auto const& pipeline) { return pipeline->hasFailed(); });
}

bool Host::hasFaults() const {
    return std::any_of(pipelinesM.begin(), pipelinesM.end(), [](auto const& pipeline) {
        auto const counters = pipeline->counters();
        return counters.rejected > 0 || counters.faults > 0;
    });
}

} // namespace host
