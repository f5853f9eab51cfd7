#include "commands/CommandFile.h"

#include "base/EscapedText.h"
#include "base/WholeFile.h"
#include "base/YamlTree.h"

#include <unistd.h>

namespace host {

namespace {

using Kind = YamlNode::Kind;

constexpr std::size_t mostBytes = std::size_t{1} << 20;

void readKeys(YamlMember const& object, Problems& problems, Command& command) {
    if (object.value.kind != Kind::map || object.value.members.empty()) {
        problems.add(object.position,
                     "'" + object.key + "' must be a mapping with the keys of the command");
        return;
    }
    for (auto const& key : object.value.members) {
        if (key.value.kind != Kind::text) {
            problems.add(key.position, "'" + key.key + "' must be a text, not " +
                                           std::string(yamlKindName(key.value.kind)));
            continue;
        }
        command.update.add(key.key, key.value.text);
    }
}

} // namespace

std::string reportSuffix(std::size_t number) {
    return number == 1 ? ".report" : "." + std::to_string(number) + ".report";
}

void removeAnswer(std::string const& base) {
    ::unlink((base + resultSuffix).c_str());
    for (std::size_t number = 1; number <= mostReports; ++number) {
        ::unlink((base + reportSuffix(number)).c_str());
    }
}

std::string readCommandBytes(FileDescriptor const& file, std::string const& name) {
    return readWholeFile(file, name, mostBytes);
}

std::vector<Command> readCommandFile(std::filesystem::path const& file, std::string const& name) {
    return parseCommandFile(readCommandBytes(openForeignFile(file), name), name);
}

std::vector<Command> parseCommandFile(std::string const& bytes, std::string const& name) {
    Problems problems(name);
    auto const document = readYaml(bytes, problems);
    if (document.kind != Kind::map || document.members.empty()) {
        problems.add(document.position,
                     "expected a mapping of objects, each with the keys of its command");
    }
    std::vector<Command> commands;
    for (auto const& object : document.members) {
        commands.push_back({BAS::RegistryEntry(object.key)});
        readKeys(object, problems, commands.back());
    }
    problems.throwIfAny();
    return commands;
}

std::string commandFileText(Command const& command) {
    auto text = quotedText(command.update.name().view()) + ":\n";
    for (auto const& key : command.update.children()) {
        text +=
            "  " + quotedText(key->name().view()) + ": " + quotedText(key->value().view()) + "\n";
    }
    return text;
}

} // namespace host
