#include "commands/Command.h"

#include "BAS/ProtectedBool.h"
#include "BAS/RegisteredObject.h"
#include "base/ExceptionText.h"
#include "base/MessageCatalogue.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <mutex>
#include <stdexcept>
#include <vector>

namespace host {

namespace {

std::vector<std::string> splitWords(std::string_view text) {
    std::vector<std::string> words;
    bool isInWord = false;
    char quote = '\0';
    for (char const c : text) {
        if (quote == '\0' && (c == ' ' || c == '\t')) {
            isInWord = false;
            continue;
        }
        if (!isInWord) {
            words.emplace_back();
            isInWord = true;
        }
        if (c == quote) {
            quote = '\0';
        } else if (quote == '\0' && (c == '"' || c == '\'')) {
            quote = c;
        } else {
            words.back() += c;
        }
    }
    if (quote != '\0') {
        throw std::invalid_argument(fmt::format("the quote {} isn't closed", quote));
    }
    return words;
}

CommandResult resultOf(Command const& command) {
    CommandResult result;
    result.object = command.update.name().str();
    for (auto const& key : command.update.children()) {
        result.keys.push_back({key->name().str(), key->value().str()});
    }
    return result;
}

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
    for (auto const& key : entry.children()) {
        if (!key->wasFound()) {
            result.ignoredKeys.push_back(key->name().str());
        }
    }
    auto const after = object.status();
    bool const isRejected = !result.isHandled && !result.fault && !after.messageName().isNull();
    if (isRejected || !isSame(before, after)) {
        result.status = after;
    }
}

} // namespace

Command parseCommand(std::string_view text) {
    return parseCommand(splitWords(text));
}

Command parseCommand(std::span<std::string const> words) {
    if (words.size() < 2) {
        throw std::invalid_argument("expected OBJECT KEY[=VALUE]...");
    }
    Command command{BAS::RegistryEntry(words.front())};
    for (std::size_t i = 1; i < words.size(); ++i) {
        auto const& word = words[i];
        auto const keyLength = std::min(word.find('='), word.size());
        auto const key = word.substr(0, keyLength);
        if (key.empty()) {
            throw std::invalid_argument("'" + word + "' lacks its key, expected KEY[=VALUE]");
        }
        if (command.update.find(key) != nullptr) {
            throw std::invalid_argument("the key '" + key + "' is given twice");
        }
        command.update.add(key, word.substr(std::min(keyLength + 1, word.size())));
    }
    return command;
}

CommandResult executeCommand(Command const& command, BAS::RegisteredObject& object,
                             FairLock* pipelineLock, WriteWatch& watch) {
    auto result = resultOf(command);
    auto const guard =
        pipelineLock == nullptr ? std::unique_lock<FairLock>() : std::unique_lock(*pipelineLock);
    NamedFiles const files(command.update, watch);
    auto const begin = std::chrono::steady_clock::now();
    update(object, command.update, result);
    result.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    result.files = files.report();
    return result;
}

CommandResult unexecutedCommand(Command const& command, std::string reason) {
    auto result = resultOf(command);
    result.fault = std::move(reason);
    return result;
}

} // namespace host
