#include "commands/CommandExecution.h"

#include "BAS/ProtectedBool.h"
#include "BAS/RegisteredObject.h"
#include "base/Failures.h"
#include "base/MessageCatalogue.h"

#include <chrono>
#include <mutex>

namespace host {

namespace {

bool isSame(BAS::Status const& one, BAS::Status const& other) {
    return one.objectName() == other.objectName() && one.messageName() == other.messageName() &&
           one.severity() == other.severity() && one.arguments() == other.arguments();
}

void update(BAS::RegisteredObject& object, BAS::RegistryEntry const& entry, CommandResult& result) {
    auto const before = object.status();
    BAS::ProtectedBool workDone;
    try {
        result.isHandled = object.registryUpdate(&entry, workDone);
    } catch (...) {
        result.fault = "the object threw: " + currentExceptionText();
    }
    result.isWorkDone = workDone.value();
    auto const after = object.status();
    bool const isRejected = !result.isHandled && !result.fault && !after.messageName().isNull();
    if (isRejected || !isSame(before, after)) {
        result.status = after;
    }
}

} // namespace

CommandResult begunResult(Command const& command) {
    CommandResult result;
    result.object = command.update.name().str();
    for (auto const& key : command.update.children()) {
        result.keys.push_back({key->name().str(), key->value().str()});
    }
    return result;
}

std::vector<std::string> keysNotAsked(Command const& command) {
    std::vector<std::string> names;
    for (auto const& key : command.update.children()) {
        if (!key->wasFound()) {
            names.push_back(key->name().str());
        }
    }
    return names;
}

CommandResult executeCommand(Command const& command, BAS::RegisteredObject& object,
                             FairLock* pipelineLock, WriteWatch& watch) {
    auto result = begunResult(command);
    auto const guard =
        pipelineLock == nullptr ? std::unique_lock<FairLock>() : std::unique_lock(*pipelineLock);
    NamedFiles const files(command.update, watch);
    auto const begin = std::chrono::steady_clock::now();
    update(object, command.update, result);
    result.ignoredKeys = keysNotAsked(command);
    result.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    result.files = files.report();
    return result;
}

CommandResult unexecutedCommand(Command const& command, std::string reason) {
    auto result = begunResult(command);
    result.fault = std::move(reason);
    return result;
}

} // namespace host
