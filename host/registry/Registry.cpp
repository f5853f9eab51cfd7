#include "registry/Registry.h"

#include "base/EscapedText.h"
#include "base/Failures.h"
#include "base/NearestName.h"
#include "base/YamlTree.h"
#include "registry/RegistryKeys.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

namespace host {

namespace {

// Where an input file is named, to find files that are named twice.
struct InputUse {
    std::string list; // the path of its key
    FilePosition position;
};

// What a directory that serves one purpose is named for.
struct DirectoryUse {
    std::string key; // its path
    FilePosition position;
};

// What a file is first named for.
struct NamedFor {
    std::string key; // its path
    FileUse use;
    FilePosition position;
};

bool isWordCharacter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_';
}

// An empty value is a mapping without keys, too.
bool isMap(YamlNode const& node) {
    return node.kind == YamlNode::Kind::map ||
           (node.kind == YamlNode::Kind::text && node.text.empty());
}

bool hasRoot(YamlNode const& document) {
    return isMap(document) && document.members.size() == 1;
}

void setName(ModuleConfiguration& module, std::string const& /*key*/, std::string const& path) {
    module.registeredName = path + ".Module";
}

void setName(PipelineConfiguration& pipeline, std::string const& key, std::string const& path) {
    pipeline.name = key;
    pipeline.registeredName = path;
}

bool isUsable(ModuleConfiguration const& module) {
    return !module.moduleName.empty();
}

bool isUsable(PipelineConfiguration const& pipeline) {
    return !pipeline.edrDescription.empty();
}

// All paths are absolute and have no '..'.
bool isBelow(std::filesystem::path const& path, std::filesystem::path const& directory) {
    auto const rest = path.lexically_relative(directory);
    return !rest.empty() && rest != "." && *rest.begin() != "..";
}

// Where links lead, as far as there is something.
std::filesystem::path targetOf(std::filesystem::path const& path) {
    std::error_code error;
    auto const target = std::filesystem::weakly_canonical(path, error);
    return error ? path : target;
}

// The path, or what it leads to, is the directory or below it.
bool isIn(std::filesystem::path const& path, std::filesystem::path const& directory) {
    auto const places = {targetOf(path.parent_path()) / path.filename(), targetOf(path)};
    return std::any_of(places.begin(), places.end(), [&](std::filesystem::path const& place) {
        return place == directory || isBelow(place, directory);
    });
}

// Walks the file along the tables of its keys. The rules between keys, such as that no two inputs
// are the same file, stand here.
class RegistryReader {
public:
    RegistryReader(std::filesystem::path const& file, Problems& problems) : problemsM(problems) {
        auto const path = std::filesystem::absolute(file).lexically_normal();
        configurationM.directory = path.parent_path();
        useFile(path, {"the registry", FileUse::read, {}});
    }

    HostConfiguration read(YamlNode const& document) {
        if (!hasRoot(document)) {
            problemsM.add(document.position,
                          "the file must hold one mapping with one key, the registry's root name");
            return {};
        }
        auto const& root = document.members.front();
        checkName(root);
        readMap<HostConfiguration>(root, root.key, rootKeys, configurationM);
        nameRejectFiles();
        checkWrittenFiles();
        checkReports();
        return std::move(configurationM);
    }

private:
    // Checks a mapping and fills the object; the path is the mapping's keys from the root, joined
    // with dots.
    template <class Object>
    void readMap(YamlMember const& map, std::string const& path, KeyTable<Object> keys,
                 Object& object) {
        if (!hasShape(map, YamlNode::Kind::map)) {
            return;
        }
        for (auto const& member : map.value.members) {
            auto const* const key = std::find_if(keys.begin(), keys.end(), [&](auto const& each) {
                return each.name == member.key;
            });
            if (key == keys.end()) {
                addUnknownKey(member, keys);
                continue;
            }
            std::visit(
                [&](auto const& kind) {
                    if (hasShape(member, kind.shape)) {
                        readValue(kind, member, path + "." + member.key, object);
                    }
                },
                key->kind);
        }
        checkMandatory(map, keys);
        checkAlternatives(map, keys);
        checkTogether(map, keys);
    }

    // A text that is empty has no value.
    bool hasShape(YamlMember const& member, YamlNode::Kind shape) {
        auto const& value = member.value;
        if (shape == YamlNode::Kind::map ? !isMap(value) : value.kind != shape) {
            problemsM.add(member.position,
                          fmt::format("'{}' must be {}, not {}", member.key, yamlKindName(shape),
                                      yamlKindName(value.kind)));
            return false;
        }
        if (shape == YamlNode::Kind::text && value.text.empty()) {
            problemsM.add(member.position, fmt::format("'{}' needs a value", member.key));
            return false;
        }
        return true;
    }

    template <class Object>
    void addUnknownKey(YamlMember const& member, KeyTable<Object> keys) {
        std::vector<std::string_view> known;
        for (auto const& key : keys) {
            known.push_back(key.name);
        }
        problemsM.add(member.position, fmt::format("unknown key '{}'{}", member.key,
                                                   nearestNameHint(member.key, known)));
    }

    template <class Object>
    void checkMandatory(YamlMember const& map, KeyTable<Object> keys) {
        for (auto const& key : keys) {
            if (key.presence == Presence::mandatory && map.value.find(key.name) == nullptr) {
                problemsM.add(map.position,
                              fmt::format("'{}' lacks the key '{}'", map.key, key.name));
            }
        }
    }

    template <class Object>
    void checkAlternatives(YamlMember const& map, KeyTable<Object> keys) {
        std::vector<std::string> alternatives;
        YamlMember const* taken = nullptr;
        for (auto const& key : keys) {
            if (key.presence != Presence::alternative) {
                continue;
            }
            alternatives.push_back(fmt::format("'{}'", key.name));
            auto const* const member = map.value.find(key.name);
            if (member != nullptr && taken != nullptr) {
                problemsM.add(member->position,
                              fmt::format("'{}' has both '{}' and '{}', expected one of them",
                                          map.key, taken->key, key.name));
            }
            taken = taken == nullptr ? member : taken;
        }
        if (!alternatives.empty() && taken == nullptr) {
            problemsM.add(map.position, fmt::format("'{}' lacks the key {}", map.key,
                                                    fmt::join(alternatives, " or ")));
        }
    }

    template <class Object>
    void checkTogether(YamlMember const& map, KeyTable<Object> keys) {
        std::vector<std::string> lacking;
        YamlMember const* taken = nullptr;
        for (auto const& key : keys) {
            if (key.presence != Presence::together) {
                continue;
            }
            auto const* const member = map.value.find(key.name);
            taken = member == nullptr ? taken : member;
            if (member == nullptr) {
                lacking.push_back(fmt::format("'{}'", key.name));
            }
        }
        if (taken != nullptr && !lacking.empty()) {
            problemsM.add(taken->position,
                          fmt::format("'{}' has '{}' without {}, expected both or neither", map.key,
                                      taken->key, fmt::join(lacking, " and ")));
        }
    }

    // Names of registered objects are joined with dots and stand between blanks in commands.
    void checkName(YamlMember const& member) { requireName(member.key, member.position); }

    void requireName(std::string const& name, FilePosition position) {
        bool const isName = !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
            return isWordCharacter(c) || c == '-';
        });
        if (!isName) {
            problemsM.add(position, fmt::format("'{}' can't be a name: expected letters, digits, "
                                                "'_' and '-', no dots",
                                                name));
        }
    }

    std::filesystem::path resolve(std::string const& path) const {
        return (configurationM.directory / path).lexically_normal();
    }

    std::filesystem::path readPath(YamlNode const& value) {
        if (hasControlCharacter(value.text)) {
            problemsM.add(value.position, fmt::format("the path '{}' has a control character, "
                                                      "expected none",
                                                      value.text));
        }
        return resolve(value.text);
    }

    template <class Object>
    void readValue(ModuleNameKey<Object> const& kind, YamlMember const& member,
                   std::string const& /*path*/, Object& object) {
        auto const& value = member.value;
        if (!std::all_of(value.text.begin(), value.text.end(), isWordCharacter)) {
            problemsM.add(value.position,
                          fmt::format("'{}' can't be a module name: expected letters, digits and "
                                      "'_'",
                                      value.text));
        }
        object.*kind.member = value.text;
    }

    template <class Object, class Path>
    void readValue(PathKey<Object, Path> const& kind, YamlMember const& member,
                   std::string const& path, Object& object) {
        auto const file = readPath(member.value);
        useFile(file, {path, kind.use, member.value.position});
        object.*kind.member = file;
    }

    template <class Object>
    void readValue(DropDirectoryKey<Object> const& kind, YamlMember const& member,
                   std::string const& path, Object& object) {
        auto const& value = member.value;
        auto const directory = (readPath(value) / "").parent_path();
        auto const [use, isNew] =
            directoryUsesM.emplace(directory, DirectoryUse{path, value.position});
        if (!isNew) {
            problemsM.add(value.position,
                          fmt::format("the directory '{}' is named twice, first on line {}",
                                      value.text, use->second.position.line));
        }
        object.*kind.member = directory;
    }

    template <class Object>
    void readValue(NumberKey<Object> const& kind, YamlMember const& member,
                   std::string const& /*path*/, Object& object) {
        auto const& value = member.value;
        long given = 0;
        if (!BAS::String(value.text).toNum(given) || given < kind.least || given > kind.most) {
            problemsM.add(value.position,
                          fmt::format("'{}' must be a whole number from {} to {}, not '{}'",
                                      member.key, kind.least, kind.most, value.text));
            return;
        }
        object.*kind.member = static_cast<std::size_t>(given);
    }

    template <class Object>
    void readValue(TruthKey<Object> const& kind, YamlMember const& member,
                   std::string const& /*path*/, Object& object) {
        auto const& text = member.value.text;
        if (text != "true" && text != "false") {
            problemsM.add(member.value.position,
                          fmt::format("'{}' must be true or false, not '{}'", member.key, text));
        }
        object.*kind.member = text == "true";
    }

    template <class Object>
    void readValue(TextKey<Object> const& kind, YamlMember const& member,
                   std::string const& /*path*/, Object& object) {
        object.*kind.member = member.value.text;
    }

    template <class Object>
    void readValue(FileModeKey<Object> const& kind, YamlMember const& member,
                   std::string const& /*path*/, Object& object) {
        auto const& text = member.value.text;
        bool const isMode = text.size() >= 3 && text.size() <= 4 &&
                            text.find_first_not_of("01234567") == std::string::npos &&
                            (text.size() == 3 || text.front() == '0');
        if (!isMode) {
            problemsM.add(member.value.position,
                          fmt::format("'{}' must be permissions in octal digits such as 0644, "
                                      "not '{}'",
                                      member.key, text));
            return;
        }
        object.*kind.member = std::stoul(text, nullptr, 8);
    }

    template <class Object>
    void readValue(InputFilesKey<Object> const& kind, YamlMember const& member,
                   std::string const& path, Object& object) {
        if (member.value.items.empty()) {
            problemsM.add(member.position, fmt::format("'{}' needs at least one file", member.key));
        }
        for (auto const& item : member.value.items) {
            if (item.kind != YamlNode::Kind::text || item.text.empty()) {
                problemsM.add(item.position, "an input file must be a path or '-'");
                continue;
            }
            (object.*kind.member).push_back({useInputFile(item, path), {}});
        }
    }

    template <class Object>
    void readValue(NameKey<Object> const& kind, YamlMember const& member,
                   std::string const& /*path*/, Object& object) {
        requireName(member.value.text, member.value.position);
        object.*kind.member = member.value.text;
    }

    template <class Object>
    void readValue(TextsKey<Object> const& kind, YamlMember const& member,
                   std::string const& /*path*/, Object& object) {
        for (auto const& item : member.value.items) {
            if (item.kind != YamlNode::Kind::text || item.text.empty()) {
                problemsM.add(item.position, fmt::format("'{}' must list texts", member.key));
            }
            (object.*kind.member).push_back(item.text);
        }
        if (member.value.items.empty()) {
            problemsM.add(member.position, fmt::format("'{}' lists nothing", member.key));
        }
    }

    template <class Object>
    void readValue(PartitionsKey<Object> const& kind, YamlMember const& member,
                   std::string const& /*path*/, Object& object) {
        auto& numbers = object.*kind.member;
        for (auto const& range : BAS::String(member.value.text).split(',')) {
            auto const ends = range.split('-');
            long first = -1;
            long last = -1;
            bool const isRange = ends.entries() >= 1 && ends.entries() <= 2 &&
                                 ends[0].toNum(first) && ends[ends.entries() - 1].toNum(last) &&
                                 first >= 0 && first <= last &&
                                 last < static_cast<long>(mostPartitions);
            for (auto number = first; isRange && number <= last; ++number) {
                numbers.push_back(static_cast<std::uint64_t>(number));
            }
            if (!isRange) {
                numbers.clear();
                break;
            }
        }
        std::sort(numbers.begin(), numbers.end());
        if (numbers.empty() ||
            std::adjacent_find(numbers.begin(), numbers.end()) != numbers.end()) {
            problemsM.add(member.value.position,
                          fmt::format("'{}' must be different numbers such as '0-3,7', not '{}'",
                                      member.key, member.value.text));
        }
    }

    template <class Object, class Part>
    void readValue(PartKey<Object, Part> const& kind, YamlMember const& member,
                   std::string const& path, Object& object) {
        auto& part = (object.*kind.member).emplace();
        readMap(member, path, kind.keys, part);
        checkPart(member, part);
    }

    void checkPart(YamlMember const& member, StreamConfiguration const& stream) {
        if (stream.partitionCount > 0 && !stream.partitions.empty() &&
            stream.partitions.back() >= stream.partitionCount) {
            problemsM.add(member.position,
                          fmt::format("'Partitions' names {}, but 'Of' says that there are {}, "
                                      "counted from 0",
                                      stream.partitions.back(), stream.partitionCount));
        }
        if (stream.user.empty() == stream.passwordFile.has_value() ||
            (stream.credentials && !stream.user.empty())) {
            problemsM.add(member.position, "expected 'Credentials', or 'User' with 'PasswordFile', "
                                           "or none of them");
        }
        if (stream.certificateAuthority && !stream.isSecure()) {
            problemsM.add(member.position,
                          "'CertificateAuthority' is for servers that begin with 'tls://', and "
                          "'Servers' has none: everything would be sent in clear");
        }
    }

    template <class Object>
    void readValue(OwnKeys const& /*kind*/, YamlMember const& member, std::string const& /*path*/,
                   Object const& /*object*/) {
        checkOwnKeys(member.value);
    }

    template <class Object>
    void readValue(MapKey<Object> const& kind, YamlMember const& member, std::string const& path,
                   Object& object) {
        readMap(member, path, kind.keys, object);
    }

    template <class Object, class Entry>
    void readValue(EntriesKey<Object, Entry> const& kind, YamlMember const& member,
                   std::string const& path, Object& object) {
        if (member.value.members.empty() && !kind.needed.empty()) {
            problemsM.add(member.position,
                          fmt::format("'{}' needs at least one {}", member.key, kind.needed));
        }
        for (auto const& each : member.value.members) {
            checkName(each);
            auto const entryPath = path + "." + each.key;
            Entry entry;
            setName(entry, each.key, entryPath);
            readMap(each, entryPath, kind.keys, entry);
            if (isUsable(entry)) {
                (object.*kind.member).push_back(std::move(entry));
            }
        }
    }

    void checkOwnKeys(YamlNode const& node) {
        for (auto const& member : node.members) {
            if (member.value.kind == YamlNode::Kind::sequence) {
                problemsM.add(
                    member.position,
                    fmt::format("'{}' must be a text or a mapping, not a sequence", member.key));
            }
            checkOwnKeys(member.value);
        }
    }

    std::filesystem::path useInputFile(YamlNode const& item, std::string const& list) {
        auto file = item.text == "-" ? std::filesystem::path("-") : readPath(item);
        if (file != "-") {
            useFile(file, {list, FileUse::read, item.position});
        }
        auto& uses = inputUsesM[file];
        if (!uses.empty() && (file == "-" || uses.back().list == list)) {
            problemsM.add(item.position,
                          fmt::format("the input '{}' is named twice, first on line {}", item.text,
                                      uses.back().position.line));
        }
        uses.push_back({list, item.position});
        return file;
    }

    // A file that several pipelines read has a reject file for each of them.
    void nameRejectFiles() {
        for (auto& pipeline : configurationM.pipelines) {
            for (auto& input : pipeline.inputs) {
                auto const& uses = inputUsesM[input.file];
                auto const suffix = uses.size() > 1 ? "." + pipeline.name + ".reject" : ".reject";
                input.rejectFile = input.file == "-"
                                       ? resolve("stdin.reject")
                                       : std::filesystem::path(input.file.string() + suffix);
                auto const asInput = inputUsesM.find(input.rejectFile);
                if (asInput != inputUsesM.end()) {
                    problemsM.add(asInput->second.front().position,
                                  "this input is the reject file of the input '" +
                                      input.file.filename().string() +
                                      "' and would be overwritten");
                } else {
                    useFile(input.rejectFile, {"the reject file of an input", FileUse::replaced,
                                               uses.front().position});
                }
            }
        }
    }

    void useFile(std::filesystem::path const& file, NamedFor const& use) {
        auto const [first, isNew] = filesM.emplace(file, use);
        bool const isOther = !isNew && first->second.key != use.key; // not an input given twice
        if (isOther && (first->second.use != use.use || use.use == FileUse::replaced)) {
            problemsM.add(use.position,
                          fmt::format("the file '{}' can't be that of {} and of {} on line {}",
                                      file.filename().string(), use.key, first->second.key,
                                      first->second.position.line));
        }
    }

    // What the host writes into an input directory, it would read or take for what it has read.
    void checkWrittenFiles() {
        for (auto const& [file, use] : filesM) {
            for (auto const& pipeline : configurationM.pipelines) {
                auto const& inputs = pipeline.inputDirectory;
                if (use.use != FileUse::read && inputs &&
                    (file.parent_path() == *inputs || file.parent_path() == *inputs / "done")) {
                    problemsM.add(use.position,
                                  fmt::format("the file of {} can't be in the input directory of "
                                              "the pipeline '{}'",
                                              use.key, pipeline.name));
                }
            }
        }
    }

    // A report has any name that a member of the group likes: it mustn't be that of a command, an
    // input or a file of the host, or of a link that leads to one.
    void checkReports() {
        auto const& reports = configurationM.groupReports;
        if (!reports) {
            return;
        }
        auto const& own = directoryUsesM.at(*reports);
        auto const room = targetOf(*reports);
        for (auto const& [directory, use] : directoryUsesM) {
            if (&use != &own && (isIn(directory, room) || isIn(*reports, targetOf(directory)))) {
                problemsM.add(own.position,
                              fmt::format("the directory '{}' of {} and '{}' of {} on line {} lie "
                                          "one in the other, expected separate ones",
                                          reports->string(), own.key, directory.string(), use.key,
                                          use.position.line));
            }
        }
        for (auto const& [file, use] : filesM) {
            if (isIn(file, room)) {
                problemsM.add(own.position,
                              fmt::format("the directory '{}' of {} is or holds '{}' of {}, "
                                          "expected nothing but reports there",
                                          reports->string(), own.key, file.string(), use.key));
            }
        }
    }

    Problems& problemsM;
    HostConfiguration configurationM;
    std::map<std::filesystem::path, std::vector<InputUse>> inputUsesM;
    std::map<std::filesystem::path, DirectoryUse> directoryUsesM;
    std::map<std::filesystem::path, NamedFor> filesM;
};

// The items of a sequence become keys that count from 0.
void fillEntry(BAS::RegistryEntry& entry, YamlNode const& node) {
    for (auto const& member : node.members) {
        fillEntry(entry.add(member.key, member.value.text), member.value);
    }
    for (std::size_t i = 0; i < node.items.size(); ++i) {
        fillEntry(entry.add(std::to_string(i), node.items[i].text), node.items[i]);
    }
}

} // namespace

BAS::RegistryEntry const* subtreeOf(Registry const& registry, BAS::String const& registeredName) {
    auto const parts = registeredName.split('.');
    BAS::RegistryEntry const* entry = registry.root.get();
    for (std::size_t i = 1; i < parts.entries() && entry != nullptr; ++i) {
        entry = entry->find(parts[i]);
    }
    return entry;
}

Registry readRegistry(std::filesystem::path const& file) {
    std::vector<BAS::Status> problems;
    auto registry = readRegistry(file, problems);
    if (!problems.empty()) {
        throw StartFailure{std::move(problems)};
    }
    return registry;
}

Registry readRegistry(std::filesystem::path const& file, std::vector<BAS::Status>& problems) {
    Problems found(file);
    auto const document = readYamlFile(file, found);
    auto configuration = RegistryReader(file, found).read(document);
    if (!hasRoot(document)) {
        found.throwIfAny();
    }
    auto const statuses = found.statuses();
    problems.insert(problems.end(), statuses.begin(), statuses.end());
    auto const& root = document.members.front();
    auto entry = std::make_unique<BAS::RegistryEntry>(root.key, root.value.text);
    fillEntry(*entry, root.value);
    return {std::move(configuration), std::move(entry)};
}

} // namespace host
