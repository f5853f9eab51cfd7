#include "run/CommandExecutor.h"

#include "BAS/LogSink.h"
#include "base/ExitCode.h"
#include "base/MessageCatalogue.h"
#include "base/NearestName.h"
#include "base/Poll.h"
#include "commands/CommandReport.h"

#include <malloc.h>
#include <unistd.h>

#include <chrono>

namespace host {

namespace {

constexpr char const* reloadKey = "Reload";
constexpr char const* force = "force";

std::vector<std::unique_lock<FairLock>> lockAll(Host const& host) {
    std::vector<std::unique_lock<FairLock>> locks;
    for (auto const& pipeline : host.pipelines()) {
        locks.emplace_back(pipeline->lock());
    }
    return locks;
}

// The part of a data module's registered name that the operator chose.
std::string ownName(BAS::String const& name) {
    auto const parts = name.split('.');
    return parts[parts.entries() - 2].str();
}

// A sentence for each module.
std::string summaryOf(Reload const& reload) {
    std::string text;
    for (auto const& each : reload.modules) {
        text += (text.empty() ? "" : " ") + ownName(each.name) + ": " +
                messageText(DAT::loadedStatus(each.module->loadReport()));
    }
    return text;
}

// The status after a reload of the whole pool.
BAS::Status poolOutcome(Reload const& reload, BAS::String const& pool) {
    if (!reload.failure) {
        return makeStatus(BAS::Status::info, pool, "MSG_POOL_RELOADED", {summaryOf(reload)});
    }
    auto const& failure = *reload.failure;
    return failure.objectName() == pool
               ? failure
               : makeStatus(BAS::Status::error, pool, "ERR_POOL_NOT_RELOADED",
                            {failure.objectName().str(), statusText(failure)});
}

} // namespace

CommandExecutor::CommandExecutor(Host& host, Notification const& stop)
    : hostM(host), stopM(stop),
      timerM(host.log(), stop, std::chrono::seconds(host.configuration().stopTimeout)) {
}

std::optional<CommandResult> CommandExecutor::execute(Command const& command, Done done) {
    auto* const object = BAS::RegisteredObject::find(command.update.name());
    auto begun = begunResult(command);
    auto const number = journalM.begin(begun);
    auto reload = object == nullptr ? std::nullopt : reloadOf(command, *object);
    if (reload && command.latest && reloaderM.isBusy()) { // it might begin at any time
        auto result = unexecutedCommand(command, "another reload goes on");
        record(number, result);
        return result;
    }
    if (!reload) {
        auto result = carryOut(command, object);
        record(number, result);
        return result;
    }
    begun.ignoredKeys = keysNotAsked(command.update, command.update);
    auto const turn = timerM.begin(begun.object, keysText(begun));
    reload->done = [this, object, number, begun, turn, done = std::move(done),
                    begin = std::chrono::steady_clock::now()](Reload& read) {
        if (!read.failure) {
            takeOver(read);
        }
        auto result = begun;
        result.isHandled = !read.failure;
        result.isWorkDone = !read.failure;
        result.status = recordOutcome(read, *object);
        result.seconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
        record(number, result);
        done(std::move(result));
    };
    reloaderM.begin(std::move(*reload));
    return std::nullopt;
}

CommandResult CommandExecutor::executeAndWait(Command const& command) {
    std::optional<CommandResult> late;
    auto result = execute(command, [&](CommandResult given) { late = std::move(given); });
    while (!result && !late) {
        waitForAny({descriptor(), stopM.descriptor()});
        finishReloads();
        if (stopM.isSet()) {
            stopReloads();
        }
    }
    return result ? std::move(*result) : std::move(*late);
}

void CommandExecutor::stopReloads() {
    auto const timeout = hostM.configuration().stopTimeout;
    if (!reloaderM.stop(std::chrono::seconds(timeout))) {
        hostM.log().write(
            makeStatus(BAS::Status::critical, {}, "ERR_RELOAD_STUCK", {std::to_string(timeout)}));
        reloaderM.giveUp();
        // Nothing waits in a buffer: logs and results are written at once.
        ::_exit(inputOrOutputFailed);
    }
}

// The reload that the command asks for, if it does and is well-formed.
std::optional<Reload> CommandExecutor::reloadOf(Command const& command,
                                                BAS::RegisteredObject& object) const {
    Reload reload;
    reload.object = object.name();
    if (auto* const module = dynamic_cast<DAT::Reloadable*>(&object)) {
        reload.modules.push_back({object.name(), module});
    } else if (&object == &hostM.dataPool()) {
        reload.modules = hostM.dataPool().modules();
    }
    auto const* const key = reload.modules.empty() ? nullptr : command.update.find(reloadKey);
    if (key == nullptr) {
        return std::nullopt;
    }
    reload.isForced = key->value() == force;
    if (!reload.isForced && !key->value().isNull()) {
        reload.failure = makeStatus(BAS::Status::error, object.name(), "ERR_REG_VALUE_INVALID",
                                    {key->value().str(), "expected nothing or 'force'."});
    }
    return reload;
}

CommandResult CommandExecutor::carryOut(Command const& command, BAS::RegisteredObject* object) {
    auto const name = command.update.name();
    auto* const pipeline = pipelineOf(name);
    auto* const lock = pipeline == nullptr ? nullptr : &pipeline->lock();
    auto result = object == nullptr ? unexecutedCommand(command, unknownObjectText(name))
                                    : executeCommand(command, *object, {lock, writeWatchM, timerM});
    if (pipeline != nullptr) {
        pipeline->countCommand();
    }
    return result;
}

// No command runs in this thread, and no batch while the locks are held. The old data are destroyed
// after the locks are released.
void CommandExecutor::takeOver(Reload& reload) {
    {
        auto const locks = lockAll(hostM);
        for (auto const& data : reload.newData) {
            data->takeOver();
        }
    }
    reload.newData.clear();
    ::malloc_trim(0); // so that the next reload finds as much memory as this one
}

BAS::Status CommandExecutor::recordOutcome(Reload const& reload,
                                           BAS::RegisteredObject& object) const {
    for (auto const& each : reload.modules) {
        if (!reload.failure) {
            each.module->recordReload(DAT::loadedStatus(each.module->loadReport()));
        } else if (reload.failure->objectName() == each.name) {
            each.module->recordReload(*reload.failure);
        }
    }
    if (&object == &hostM.dataPool()) {
        hostM.dataPool().recordReload(poolOutcome(reload, object.name()));
    }
    return object.status();
}

void CommandExecutor::record(std::uint64_t number, CommandResult const& result) {
    journalM.end(number, result);
    auto& log = hostM.log();
    log.write(result.isHandled ? makeStatus(BAS::Status::info, result.object, "MSG_COMMAND_RESULT",
                                            {resultText(result)})
                               : makeStatus(BAS::Status::error, result.object,
                                            "ERR_COMMAND_REJECTED", {resultText(result)}));
    for (auto const& file : result.files) {
        if (!file.reason.empty() && !result.fault) {
            log.write(makeStatus(BAS::Status::warning, result.object,
                                 file.isOpened ? MessageName("ERR_COMMAND_FILE_NOT_WHOLE")
                                               : MessageName("ERR_COMMAND_FILE_NOT_OPENED"),
                                 {file.key, file.path.string(), file.reason}));
        }
    }
}

PipelineRunner* CommandExecutor::pipelineOf(BAS::String const& object) const {
    for (auto const& pipeline : hostM.pipelines()) {
        auto const& name = pipeline->configuration().registeredName;
        if (object == name || object.view().starts_with(name + ".")) {
            return pipeline.get();
        }
    }
    return nullptr;
}

std::string CommandExecutor::unknownObjectText(BAS::String const& object) const {
    std::vector<std::string> names;
    for (auto const& known : hostM.objects()) {
        names.push_back(known.object->name().str());
    }
    return "unknown object" + nearestNameHint(object.view(), {names.begin(), names.end()});
}

} // namespace host
