#include "registry/Registry.h"

#include "base/Failures.h"
#include "base/YamlTree.h"
#include "registry/KeyRules.h"

#include <algorithm>
#include <array>
#include <map>

namespace host {

namespace {

using Kind = YamlNode::Kind;

constexpr std::array rootRules = {
    KeyRule{"Commands", Kind::map, KeyRule::optional},
    KeyRule{"Log", Kind::map, KeyRule::optional},
    KeyRule{"DataPool", Kind::map, KeyRule::mandatory},
    KeyRule{"Pipelines", Kind::map, KeyRule::mandatory},
};
constexpr std::array commandsRules = {
    KeyRule{"Directory", Kind::text, KeyRule::mandatory},
};
constexpr std::array logRules = {
    KeyRule{"Process", Kind::text, KeyRule::mandatory},
};
constexpr std::array moduleRules = {
    KeyRule{"ModuleName", Kind::text, KeyRule::mandatory},
    KeyRule{"Library", Kind::text, KeyRule::optional},
    KeyRule{"Module", Kind::map, KeyRule::optional},
};
constexpr std::array pipelineRules = {
    KeyRule{"EdrDescription", Kind::text, KeyRule::mandatory},
    KeyRule{"BatchSize", Kind::text, KeyRule::optional},
    KeyRule{"Input", Kind::map, KeyRule::mandatory},
    KeyRule{"Log", Kind::text, KeyRule::optional},
    KeyRule{"Functions", Kind::map, KeyRule::mandatory},
};
constexpr std::array inputRules = {
    KeyRule{"Files", Kind::sequence, KeyRule::optional},
    KeyRule{"Directory", Kind::text, KeyRule::optional},
    KeyRule{"MaxLineLength", Kind::text, KeyRule::optional},
};

constexpr std::size_t maxBatchSize = 100'000;
constexpr std::size_t maxMaxLineLength = std::size_t{1} << 30;

bool isWordCharacter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_';
}

// Where an input file is named, to find files that are named twice.
struct InputUse {
    std::string pipeline;
    FilePosition position;
};

bool hasRoot(YamlNode const& document) {
    return isMap(document) && document.members.size() == 1;
}

class RegistryReader {
public:
    RegistryReader(std::filesystem::path const& file, Problems& problems) : problemsM(problems) {
        configurationM.directory = std::filesystem::absolute(file).lexically_normal().parent_path();
    }

    HostConfiguration read(YamlNode const& document) {
        if (!hasRoot(document)) {
            problemsM.add(document.position,
                          "the file must hold one mapping with one key, the registry's root name");
            return {};
        }
        auto const& root = document.members.front();
        rootNameM = root.key;
        checkName(root);
        checkKeys(root, rootRules, problemsM);
        readCommands(root.value);
        readLog(root.value);
        readDataPool(root.value);
        readPipelines(root.value);
        nameRejectFiles();
        return std::move(configurationM);
    }

private:
    // Names of registered objects are joined with dots and stand between blanks in commands.
    void checkName(YamlMember const& member) {
        bool const isName = !member.key.empty() &&
                            std::all_of(member.key.begin(), member.key.end(),
                                        [](char c) { return isWordCharacter(c) || c == '-'; });
        if (!isName) {
            problemsM.add(member.position, "'" + member.key +
                                               "' can't be a name: expected letters, digits, '_' "
                                               "and '-', no dots");
        }
    }

    std::filesystem::path resolve(std::string const& path) const {
        return (configurationM.directory / path).lexically_normal();
    }

    void readCommands(YamlNode const& root) {
        auto const* const commands = root.find("Commands");
        if (commands == nullptr) {
            return;
        }
        checkKeys(*commands, commandsRules, problemsM);
        if (auto const* const directory = valueOf(commands->value, "Directory", Kind::text)) {
            configurationM.commandDirectory = useDirectory(*directory);
        }
    }

    // A directory into which others put files serves one purpose only.
    std::filesystem::path useDirectory(YamlNode const& node) {
        auto path = (resolve(node.text) / "").parent_path();
        auto const [use, isNew] = directoryUsesM.emplace(path, node.position);
        if (!isNew) {
            problemsM.add(node.position, "the directory '" + node.text +
                                             "' is named twice, first on line " +
                                             std::to_string(use->second.line));
        }
        return path;
    }

    void readLog(YamlNode const& root) {
        auto const* const log = root.find("Log");
        if (log == nullptr || !isMap(log->value)) {
            return;
        }
        checkKeys(*log, logRules, problemsM);
        if (auto const* const process = valueOf(log->value, "Process", Kind::text)) {
            configurationM.processLog = resolve(process->text);
        }
    }

    void readDataPool(YamlNode const& root) {
        if (auto const* const dataPool = valueOf(root, "DataPool", Kind::map)) {
            configurationM.dataPool = readModules(*dataPool, rootNameM + ".DataPool");
        }
    }

    void readPipelines(YamlNode const& root) {
        auto const* const pipelines = root.find("Pipelines");
        if (pipelines == nullptr || !isMap(pipelines->value)) {
            return;
        }
        if (pipelines->value.members.empty()) {
            problemsM.add(pipelines->position, "'Pipelines' names no pipeline");
        }
        for (auto const& member : pipelines->value.members) {
            auto pipeline = readPipeline(member);
            if (!pipeline.edrDescription.empty()) {
                configurationM.pipelines.push_back(std::move(pipeline));
            }
        }
    }

    PipelineConfiguration readPipeline(YamlMember const& member) {
        checkName(member);
        checkKeys(member, pipelineRules, problemsM);
        PipelineConfiguration pipeline;
        pipeline.name = member.key;
        pipeline.registeredName = rootNameM + ".Pipelines." + member.key;
        if (auto const* const description = valueOf(member.value, "EdrDescription", Kind::text)) {
            pipeline.edrDescription = resolve(description->text);
        }
        if (auto const* const log = valueOf(member.value, "Log", Kind::text)) {
            pipeline.log = resolve(log->text);
        }
        readNumber(member.value, "BatchSize", maxBatchSize, pipeline.batchSize);
        if (auto const* const input = member.value.find("Input")) {
            readInput(*input, pipeline);
        }
        if (auto const* const functions = valueOf(member.value, "Functions", Kind::map)) {
            pipeline.functions = readModules(*functions, pipeline.registeredName + ".Functions");
        }
        return pipeline;
    }

    void readInput(YamlMember const& input, PipelineConfiguration& pipeline) {
        if (!isMap(input.value)) {
            return;
        }
        checkKeys(input, inputRules, problemsM);
        readNumber(input.value, "MaxLineLength", maxMaxLineLength, pipeline.maxLineLength);
        auto const* const files = input.value.find("Files");
        if (auto const* const directory = input.value.find("Directory")) {
            if (files != nullptr) {
                problemsM.add(directory->position,
                              "'Input' has both 'Files' and 'Directory', expected one of them");
            } else if (directory->value.kind == Kind::text) {
                pipeline.inputDirectory = useDirectory(directory->value);
            }
        } else if (files == nullptr) {
            problemsM.add(input.position, "'Input' lacks the key 'Files' or 'Directory'");
        } else if (files->value.kind == Kind::sequence && files->value.items.empty()) {
            problemsM.add(files->position, "'Files' names no file");
        }
        if (files == nullptr) {
            return;
        }
        for (auto const& item : files->value.items) {
            readInputFile(item, pipeline);
        }
    }

    void readInputFile(YamlNode const& item, PipelineConfiguration& pipeline) {
        if (item.kind != Kind::text || item.text.empty()) {
            problemsM.add(item.position, "an input file must be a path or '-'");
            return;
        }
        auto const file = item.text == "-" ? std::filesystem::path("-") : resolve(item.text);
        auto& uses = inputUsesM[file];
        if (!uses.empty() && (file == "-" || uses.back().pipeline == pipeline.name)) {
            problemsM.add(item.position, "the input '" + item.text + "' is named twice, first on " +
                                             "line " + std::to_string(uses.back().position.line));
        }
        uses.push_back({pipeline.name, item.position});
        pipeline.inputs.push_back({file, {}});
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
                }
            }
        }
    }

    std::vector<ModuleConfiguration> readModules(YamlNode const& modules,
                                                 std::string const& parentName) {
        std::vector<ModuleConfiguration> configurations;
        for (auto const& member : modules.members) {
            auto module = readModule(member, parentName);
            if (!module.moduleName.empty()) {
                configurations.push_back(std::move(module));
            }
        }
        return configurations;
    }

    ModuleConfiguration readModule(YamlMember const& member, std::string const& parentName) {
        checkName(member);
        checkKeys(member, moduleRules, problemsM);
        ModuleConfiguration module;
        module.registeredName = parentName + "." + member.key + ".Module";
        if (auto const* const name = valueOf(member.value, "ModuleName", Kind::text)) {
            module.moduleName = name->text;
            if (!std::all_of(name->text.begin(), name->text.end(), isWordCharacter)) {
                problemsM.add(name->position, "'" + name->text +
                                                  "' can't be a module name: expected letters, "
                                                  "digits and '_'");
            }
        }
        if (auto const* const library = valueOf(member.value, "Library", Kind::text)) {
            module.library = resolve(library->text);
        }
        if (auto const* const own = valueOf(member.value, "Module", Kind::map)) {
            checkModuleTree(*own);
        }
        return module;
    }

    // The keys are the module's own; only the shapes are the registry's.
    void checkModuleTree(YamlNode const& node) {
        for (auto const& member : node.members) {
            if (member.value.kind == Kind::sequence) {
                problemsM.add(member.position,
                              "'" + member.key + "' must be a text or a mapping, not a sequence");
            }
            checkModuleTree(member.value);
        }
    }

    void readNumber(YamlNode const& map, std::string_view key, std::size_t most,
                    std::size_t& number) {
        auto const* const value = valueOf(map, key, Kind::text);
        if (value == nullptr || value->text.empty()) {
            return;
        }
        long given = 0;
        if (!BAS::String(value->text).toNum(given) || given < 1 ||
            static_cast<std::size_t>(given) > most) {
            problemsM.add(value->position, "'" + std::string(key) + "' must be a whole number " +
                                               "from 1 to " + std::to_string(most) + ", not '" +
                                               value->text + "'");
            return;
        }
        number = static_cast<std::size_t>(given);
    }

    Problems& problemsM;
    HostConfiguration configurationM;
    std::string rootNameM;
    std::map<std::filesystem::path, std::vector<InputUse>> inputUsesM;
    std::map<std::filesystem::path, FilePosition> directoryUsesM;
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
