#include "commands/CommandExecution.h"

#include "BAS/ProtectedBool.h"
#include "BAS/RegisteredObject.h"
#include "base/Failures.h"
#include "base/MessageCatalogue.h"
#include "commands/PreparedCommand.h"

#include <algorithm>
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

// Why none of the reports may take its place.
std::string objectionTo(CommandResult const& result) {
    return result.fault.value_or(result.isHandled ? "" : "the object rejected the command");
}

// A value that the object didn't ask for, it couldn't open.
void forgiveUnasked(BAS::RegistryEntry const& update, std::vector<NamedFile>& files) {
    auto const ignored = keysNotAsked(update);
    for (auto& file : files) {
        if (!file.isOpened &&
            std::find(ignored.begin(), ignored.end(), file.key) != ignored.end()) {
            file.reason = "the object didn't ask for the key";
        }
    }
}

void execute(PreparedCommand& prepared, BAS::RegisteredObject& object, CommandRoom const& room,
             CommandResult& result) {
    auto guard = room.pipelineLock == nullptr ? std::unique_lock<FairLock>()
                                              : std::unique_lock(*room.pipelineLock);
    auto const turn =
        room.timer.begin(result.object, keysText(result), [&] { prepared.removeTraces(); });
    NamedFiles const files(prepared.plainValues(), room.watch);
    result.time = std::chrono::system_clock::now();
    auto const begin = std::chrono::steady_clock::now();
    update(object, prepared.update(), result);
    result.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    result.ignoredKeys = keysNotAsked(prepared.update());
    result.files = files.report();
    if (guard.owns_lock()) {
        guard.unlock(); // the disk is no business of the pipeline's
    }
    auto const collected = prepared.finish(objectionTo(result));
    result.files.insert(result.files.end(), collected.begin(), collected.end());
    forgiveUnasked(prepared.update(), result.files);
}

} // namespace

std::string keysText(CommandResult const& result) {
    std::string text;
    for (auto const& key : result.keys) {
        text += (text.empty() ? "" : " ") + key.name;
        if (!key.value.empty()) {
            text += "=" + key.value;
        }
    }
    return text;
}

bool CommandResult::isFaultless() const {
    return isHandled && ignoredKeys.empty() &&
           std::none_of(files.begin(), files.end(),
                        [](NamedFile const& file) { return file.hasFailed; });
}

CommandResult begunResult(Command const& command) {
    CommandResult result;
    result.object = command.update.name().str();
    for (auto const& key : command.update.children()) {
        result.keys.push_back({key->name().str(), key->value().str()});
    }
    return result;
}

std::vector<std::string> keysNotAsked(BAS::RegistryEntry const& update) {
    std::vector<std::string> names;
    for (auto const& key : update.children()) {
        if (!key->wasFound()) {
            names.push_back(key->name().str());
        }
    }
    return names;
}

CommandResult executeCommand(Command const& command, BAS::RegisteredObject& object,
                             CommandRoom const& room) {
    auto result = begunResult(command);
    try {
        PreparedCommand prepared(command);
        execute(prepared, object, room, result);
    } catch (CommandRefused const& refused) {
        result.fault = refused.what();
        result.files = {refused.file()};
    }
    return result;
}

CommandResult unexecutedCommand(Command const& command, std::string reason) {
    auto result = begunResult(command);
    result.fault = std::move(reason);
    return result;
}

} // namespace host
