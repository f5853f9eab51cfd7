#include "commands/Command.h"

#include <fmt/format.h>

#include <algorithm>
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
            throw std::invalid_argument("'" + word + "' has no key, expected KEY[=VALUE]");
        }
        if (command.update.find(key) != nullptr) {
            throw std::invalid_argument("the key '" + key + "' is given twice");
        }
        command.update.add(key, word.substr(std::min(keyLength + 1, word.size())));
    }
    return command;
}

std::size_t senderReports(Command const& command) {
    auto const& keys = command.update.children();
    return static_cast<std::size_t>(std::count_if(keys.begin(), keys.end(), [](auto const& key) {
        return key->value().view() == senderValue;
    }));
}

bool hasSenderReport(Command const& command) {
    return senderReports(command) > 0;
}

} // namespace host
