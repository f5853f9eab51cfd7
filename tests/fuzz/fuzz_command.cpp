#include "FuzzInput.h"
#include "commands/CommandFile.h"

namespace {

// Where the YAML parser still takes a text in front of a colon for a key.
constexpr std::size_t longestWrittenKey = 100;

std::vector<host::Command> commandsOf(std::string_view bytes) {
    return host::parseCommandFile(std::string(bytes), "input");
}

void checkSame(BAS::RegistryEntry const& one, BAS::RegistryEntry const& other) {
    fuzz::promise(one.name() == other.name() && one.value() == other.value(), "the same texts");
    fuzz::promise(one.children().size() == other.children().size(), "the same keys");
    for (std::size_t i = 0; i < one.children().size(); ++i) {
        checkSame(*one.children()[i], *other.children()[i]);
    }
}

bool canBeWritten(host::Command const& command) {
    auto const& keys = command.update.children();
    return command.update.name().length() <= longestWrittenKey &&
           std::all_of(keys.begin(), keys.end(),
                       [](auto const& key) { return key->name().length() <= longestWrittenKey; });
}

} // namespace

// What is read can be written and is read again as it was.
int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::vector<host::Command> commands;
    auto const text = fuzz::textOf(data, size);
    fuzz::isAccepted(text, [&](auto const& /*file*/) { commands = commandsOf(text); });
    for (auto const& command : commands) {
        fuzz::promise(!command.update.children().empty(), "a command has a key");
        if (canBeWritten(command)) {
            auto const again = commandsOf(host::commandFileText(command));
            fuzz::promise(again.size() == 1, "one command");
            checkSame(command.update, again.front().update);
        }
    }
    return 0;
}
