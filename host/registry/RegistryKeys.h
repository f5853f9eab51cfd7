// The keys that the host takes in its registry, as constant tables: a row binds a key's name,
// whether it must be there, and the kind of its value with the member that the value fills. A key
// without a value leaves the member as the configuration initializes it.
#pragma once

#include "base/YamlTree.h"
#include "registry/Registry.h"

#include <cstddef>
#include <string_view>
#include <variant>

namespace host {

template <class Object>
struct Key;

// The keys of one mapping, which fill an object.
template <class Object>
class KeyTable {
public:
    template <std::size_t size>
    constexpr KeyTable(Key<Object> const (&keys)[size]) : firstM(keys), sizeM(size) {}

    constexpr Key<Object> const* begin() const { return firstM; }
    constexpr Key<Object> const* end() const { return firstM + sizeM; }

private:
    Key<Object> const* firstM;
    std::size_t sizeM;
};

// The name of a module: letters, digits and '_'.
template <class Object>
struct ModuleNameKey {
    static constexpr auto shape = YamlNode::Kind::text;
    std::string Object::*member;
};

// What the host does with a file. Several may read it or append to it, and nobody may do anything
// else with a file that is replaced.
enum class FileUse { read, appended, replaced };

// A path, relative to the registry's directory.
template <class Object, class Path>
struct PathKey {
    static constexpr auto shape = YamlNode::Kind::text;
    Path Object::*member;
    FileUse use = FileUse::read;
};
template <class Object, class Path>
PathKey(Path Object::*, FileUse = FileUse::read) -> PathKey<Object, Path>;

// The path of a directory that serves one purpose only, since files of others lie in it.
template <class Object>
struct DropDirectoryKey {
    static constexpr auto shape = YamlNode::Kind::text;
    std::optional<std::filesystem::path> Object::*member;
};
template <class Object>
DropDirectoryKey(std::optional<std::filesystem::path> Object::*) -> DropDirectoryKey<Object>;

template <class Object>
struct NumberKey {
    static constexpr auto shape = YamlNode::Kind::text;
    std::size_t Object::*member;
    long least;
    long most;
};
template <class Object>
NumberKey(std::size_t Object::*, long, long) -> NumberKey<Object>;

// A text that others than the host give a meaning.
template <class Object>
struct TextKey {
    static constexpr auto shape = YamlNode::Kind::text;
    std::string Object::*member;
};
template <class Object>
TextKey(std::string Object::*) -> TextKey<Object>;

// "true" or "false".
template <class Object>
struct TruthKey {
    static constexpr auto shape = YamlNode::Kind::text;
    bool Object::*member;
};
template <class Object>
TruthKey(bool Object::*) -> TruthKey<Object>;

// The permissions of a file, in octal digits.
template <class Object>
struct FileModeKey {
    static constexpr auto shape = YamlNode::Kind::text;
    std::size_t Object::*member;
};

// A list of at least one input file, each a path or "-".
template <class Object>
struct InputFilesKey {
    static constexpr auto shape = YamlNode::Kind::sequence;
    std::vector<InputConfiguration> Object::*member;
};

// A text that holds letters, digits, '_' and '-' only.
template <class Object>
struct NameKey {
    static constexpr auto shape = YamlNode::Kind::text;
    std::string Object::*member;
};
template <class Object>
NameKey(std::string Object::*) -> NameKey<Object>;

// A list of at least one text.
template <class Object>
struct TextsKey {
    static constexpr auto shape = YamlNode::Kind::sequence;
    std::vector<std::string> Object::*member;
};
template <class Object>
TextsKey(std::vector<std::string> Object::*) -> TextsKey<Object>;

// Different numbers, such as "0-3,7", up to the highest partition.
template <class Object>
struct PartitionsKey {
    static constexpr auto shape = YamlNode::Kind::text;
    std::vector<std::uint64_t> Object::*member;
};
template <class Object>
PartitionsKey(std::vector<std::uint64_t> Object::*) -> PartitionsKey<Object>;

// A mapping that fills an object of its own.
template <class Object, class Part>
struct PartKey {
    static constexpr auto shape = YamlNode::Kind::map;
    std::optional<Part> Object::*member;
    KeyTable<Part> keys;
};
template <class Object, class Part, std::size_t size>
PartKey(std::optional<Part> Object::*, Key<Part> const (&)[size]) -> PartKey<Object, Part>;

// A mapping whose keys fill the same object.
template <class Object>
struct MapKey {
    static constexpr auto shape = YamlNode::Kind::map;
    KeyTable<Object> keys;
};
template <class Object, std::size_t size>
MapKey(Key<Object> const (&)[size]) -> MapKey<Object>;

// A mapping of names to mappings, each of which fills an entry.
template <class Object, class Entry>
struct EntriesKey {
    static constexpr auto shape = YamlNode::Kind::map;
    std::vector<Entry> Object::*member;
    KeyTable<Entry> keys;
    std::string_view needed; // at least one such entry; empty: there may be none
};
template <class Object, class Entry, std::size_t size>
EntriesKey(std::vector<Entry> Object::*, Key<Entry> const (&)[size], std::string_view)
    -> EntriesKey<Object, Entry>;

// A mapping whose keys are a module's own; only the shapes below it are the registry's.
struct OwnKeys {
    static constexpr auto shape = YamlNode::Kind::map;
};

// With alternatives in a mapping, exactly one of them must be there; of keys that go together, all
// or none.
enum class Presence { optional, mandatory, alternative, together };

template <class Object>
struct Key {
    std::string_view name;
    Presence presence;
    std::variant<ModuleNameKey<Object>, PathKey<Object, std::filesystem::path>,
                 PathKey<Object, std::optional<std::filesystem::path>>, DropDirectoryKey<Object>,
                 NumberKey<Object>, TruthKey<Object>, FileModeKey<Object>, InputFilesKey<Object>,
                 NameKey<Object>, TextKey<Object>, TextsKey<Object>, PartitionsKey<Object>,
                 PartKey<Object, StreamConfiguration>, MapKey<Object>,
                 EntriesKey<Object, ModuleConfiguration>, EntriesKey<Object, PipelineConfiguration>,
                 OwnKeys>
        kind;
};

inline constexpr Key<ModuleConfiguration> moduleKeys[] = {
    {"ModuleName", Presence::mandatory,
     ModuleNameKey<ModuleConfiguration>{&ModuleConfiguration::moduleName}},
    {"Library", Presence::optional, PathKey{&ModuleConfiguration::library}},
    {"Module", Presence::optional, OwnKeys{}},
};

inline constexpr std::size_t mostPartitions = 4096;

inline constexpr Key<StreamConfiguration> streamKeys[] = {
    {"Name", Presence::mandatory, NameKey{&StreamConfiguration::name}},
    {"Servers", Presence::mandatory, TextsKey{&StreamConfiguration::servers}},
    {"Partitions", Presence::mandatory, PartitionsKey{&StreamConfiguration::partitions}},
    {"Of", Presence::mandatory, NumberKey{&StreamConfiguration::partitionCount, 1, mostPartitions}},
    {"Credentials", Presence::optional, PathKey{&StreamConfiguration::credentials}},
    {"User", Presence::optional, TextKey{&StreamConfiguration::user}},
    {"PasswordFile", Presence::optional, PathKey{&StreamConfiguration::passwordFile}},
    {"CertificateAuthority", Presence::optional,
     PathKey{&StreamConfiguration::certificateAuthority}},
    {"InboxPrefix", Presence::optional, NameKey{&StreamConfiguration::inboxPrefix}},
    {"StateDirectory", Presence::mandatory, PathKey{&StreamConfiguration::stateDirectory}},
    {"WarmUp", Presence::optional, NumberKey{&StreamConfiguration::warmUp, 0, 1'000'000}},
    {"Commands", Presence::optional, TruthKey{&StreamConfiguration::takesCommands}},
};

inline constexpr Key<PipelineConfiguration> inputKeys[] = {
    {"Files", Presence::alternative,
     InputFilesKey<PipelineConfiguration>{&PipelineConfiguration::inputs}},
    {"Directory", Presence::alternative, DropDirectoryKey{&PipelineConfiguration::inputDirectory}},
    {"Stream", Presence::alternative, PartKey{&PipelineConfiguration::stream, streamKeys}},
    {"MaxLineLength", Presence::optional,
     NumberKey{&PipelineConfiguration::maxLineLength, 1, 1 << 30}},
};

inline constexpr Key<PipelineConfiguration> pipelineKeys[] = {
    {"EdrDescription", Presence::mandatory, PathKey{&PipelineConfiguration::edrDescription}},
    {"Input", Presence::mandatory, MapKey{inputKeys}},
    {"BatchSize", Presence::optional, NumberKey{&PipelineConfiguration::batchSize, 1, 100'000}},
    {"Log", Presence::optional, PathKey{&PipelineConfiguration::log, FileUse::appended}},
    {"CountBy", Presence::optional, TextKey{&PipelineConfiguration::countBy}},
    {"Functions", Presence::mandatory,
     EntriesKey{&PipelineConfiguration::functions, moduleKeys, ""}},
};

inline constexpr Key<HostConfiguration> commandsKeys[] = {
    {"Directory", Presence::mandatory, DropDirectoryKey{&HostConfiguration::commandDirectory}},
    {"Group", Presence::together, TextKey<HostConfiguration>{&HostConfiguration::commandGroup}},
    {"Reports", Presence::together, DropDirectoryKey{&HostConfiguration::groupReports}},
    {"KeepResults", Presence::optional, NumberKey{&HostConfiguration::keepResults, 1, 36'500}},
    {"StopTimeout", Presence::optional, NumberKey{&HostConfiguration::stopTimeout, 1, 86'400}},
};

inline constexpr Key<HostConfiguration> logKeys[] = {
    {"Process", Presence::mandatory, PathKey{&HostConfiguration::processLog, FileUse::appended}},
};

inline constexpr Key<HostConfiguration> statusKeys[] = {
    {"File", Presence::mandatory, PathKey{&HostConfiguration::statusFile, FileUse::replaced}},
};

inline constexpr Key<HostConfiguration> metricsKeys[] = {
    {"File", Presence::mandatory, PathKey{&HostConfiguration::metricsFile, FileUse::replaced}},
    {"Mode", Presence::optional, FileModeKey<HostConfiguration>{&HostConfiguration::metricsMode}},
};

inline constexpr Key<HostConfiguration> watchdogKeys[] = {
    {"BatchSeconds", Presence::optional,
     NumberKey{&HostConfiguration::longestBatchSeconds, 1, 86'400}},
};

inline constexpr Key<HostConfiguration> rootKeys[] = {
    {"Commands", Presence::optional, MapKey{commandsKeys}},
    {"Log", Presence::optional, MapKey{logKeys}},
    {"Status", Presence::optional, MapKey{statusKeys}},
    {"Metrics", Presence::optional, MapKey{metricsKeys}},
    {"Watchdog", Presence::optional, MapKey{watchdogKeys}},
    {"DataPool", Presence::mandatory, EntriesKey{&HostConfiguration::dataPool, moduleKeys, ""}},
    {"Pipelines", Presence::mandatory,
     EntriesKey{&HostConfiguration::pipelines, pipelineKeys, "pipeline"}},
};

} // namespace host
