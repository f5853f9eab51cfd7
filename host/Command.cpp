#include "Command.h"

#include "BAS/ProtectedBool.h"
#include "BAS/RegisteredObject.h"
#include "ExceptionText.h"
#include "MessageCatalogue.h"
#include "PrintableText.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
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

std::string keysOf(BAS::RegistryEntry const& update) {
    std::string keys;
    for (auto const& key : update.children()) {
        keys += (keys.empty() ? "" : " ") + key->name().str();
        if (!key->value().isNull()) {
            keys += "=" + key->value().str();
        }
    }
    return keys;
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
    if (auto const after = object.status(); !isSame(before, after)) {
        result.newStatus = after;
    }
}

} // namespace

Command parseCommand(std::string_view text) {
    auto const words = splitWords(text);
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

CommandResult executeCommand(Command const& command, std::mutex* pipelineLock) {
    CommandResult result;
    result.object = command.update.name().str();
    result.keys = keysOf(command.update);
    auto const begin = std::chrono::steady_clock::now();
    auto const guard =
        pipelineLock == nullptr ? std::unique_lock<std::mutex>() : std::unique_lock(*pipelineLock);
    if (auto* const object = BAS::RegisteredObject::find(command.update.name())) {
        update(*object, command.update, result);
    } else {
        result.fault = "there is no such object";
    }
    result.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    return result;
}

std::string resultText(CommandResult const& result) {
    auto const verdict = result.fault       ? "not handled, " + *result.fault
                         : result.isHandled ? std::string("handled")
                                            : std::string("rejected");
    auto text = fmt::format("{} {}: {}, {}", result.object, result.keys, verdict,
                            result.isWorkDone ? "work done" : "no work done");
    if (result.newStatus) {
        text += ", status " + statusText(*result.newStatus);
    }
    return printable(fmt::format("{}, {:.3f} s", text, result.seconds));
}

} // namespace host
