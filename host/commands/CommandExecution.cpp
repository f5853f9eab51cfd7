#include "commands/CommandExecution.h"

#include "BAS/ProtectedBool.h"
#include "BAS/RegisteredObject.h"
#include "base/Failures.h"
#include "base/MessageCatalogue.h"
#include "base/NearestName.h"
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
void forgiveUnasked(CommandResult& result) {
    auto const& ignored = result.ignoredKeys;
    for (auto& file : result.files) {
        if (!file.isOpened && std::any_of(ignored.begin(), ignored.end(),
                                          [&](auto const& key) { return key.name == file.key; })) {
            file.reason = "the object didn't ask for the key";
        }
    }
}

void execute(Command const& command, PreparedCommand& prepared, BAS::RegisteredObject& object,
             CommandRoom const& room, CommandResult& result) {
    auto guard = room.pipelineLock == nullptr ? std::unique_lock<FairLock>()
                                              : std::unique_lock(*room.pipelineLock);
    auto const turn =
        room.timer.begin(result.object, keysText(result), [&] { prepared.removeTraces(); });
    if (command.latest && std::chrono::steady_clock::now() >= *command.latest) {
        result.fault = "it was to begin earlier, and its sender waits no longer";
        result.files = prepared.finish(*result.fault);
        return;
    }
    NamedFiles const files(prepared.plainValues(), room.watch);
    result.time = std::chrono::system_clock::now();
    auto const begin = std::chrono::steady_clock::now();
    update(object, prepared.update(), result);
    result.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    result.ignoredKeys = keysNotAsked(prepared.update(), command.update);
    result.files = files.report();
    if (guard.owns_lock()) {
        guard.unlock(); // the disk is no business of the pipeline's
    }
    auto const collected = prepared.finish(objectionTo(result));
    result.files.insert(result.files.end(), collected.begin(), collected.end());
    forgiveUnasked(result);
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

std::vector<CommandResult::IgnoredKey> keysNotAsked(BAS::RegistryEntry const& update,
                                                    BAS::RegistryEntry const& command) {
    auto const missed = {update.namesMissed(), command.namesMissed()};
    std::vector<std::string_view> asked;
    for (auto const& names : missed) {
        for (auto const& name : names) {
            asked.push_back(name.view());
        }
    }
    std::vector<CommandResult::IgnoredKey> ignored;
    for (auto const& key : update.children()) {
        if (!key->wasFound()) {
            ignored.push_back({key->name().str(), nearestName(key->name().view(), asked)});
        }
    }
    return ignored;
}

CommandResult executeCommand(Command const& command, BAS::RegisteredObject& object,
                             CommandRoom const& room) {
    auto result = begunResult(command);
    try {
        PreparedCommand prepared(command);
        execute(command, prepared, object, room, result);
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
