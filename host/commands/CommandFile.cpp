#include "commands/CommandFile.h"

#include "base/FileDescriptor.h"
#include "base/QuotedText.h"
#include "base/SystemError.h"
#include "base/YamlTree.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cstdio>

namespace host {

namespace {

using Kind = YamlNode::Kind;

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

std::vector<Command> readCommandFile(std::filesystem::path const& file, std::string const& name) {
    Problems problems(name);
    auto const document = readYamlFile(file, problems);
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

void writeWholeFile(std::filesystem::path const& file, std::string_view text) {
    auto const temporary = file.parent_path() / ("." + file.filename().string() + ".tmp");
    FileDescriptor const descriptor(
        ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    // Root sends commands to hosts of other users, whatever its mask.
    if (!descriptor.isOpen() || ::fchmod(descriptor.number(), 0644) != 0 ||
        !writeAll(descriptor.number(), text) || ::rename(temporary.c_str(), file.c_str()) != 0) {
        auto const error = errno;
        ::unlink(temporary.c_str());
        throw fileStatus("ERR_FILE_NOT_WRITABLE", file, error);
    }
}

} // namespace host
