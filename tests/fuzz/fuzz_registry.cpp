#include "BAS/String.h"
#include "FuzzInput.h"
#include "registry/Registry.h"

#include <set>

namespace {

// Whether the entry of a registered name, or the one above it, stands in the tree.
void checkEntry(BAS::RegistryEntry const& root, std::string const& registeredName) {
    auto const parts = BAS::String(registeredName).split('.');
    fuzz::promise(parts.entries() > 2 && parts[0] == root.name(), "a name begins with the root's");
    auto const* entry = &root;
    for (std::size_t i = 1; i + 1 < parts.entries(); ++i) {
        entry = entry->find(parts[i]);
        fuzz::promise(entry != nullptr, "a module has its subtree: " + registeredName);
    }
}

class Check {
public:
    explicit Check(host::Registry const& registry) : registryM(registry) {
        fuzz::promise(registry.root != nullptr, "a registry has a root");
        for (auto const& module : registry.configuration.dataPool) {
            check(module);
        }
        fuzz::promise(!registry.configuration.pipelines.empty(), "there is a pipeline");
        for (auto const& pipeline : registry.configuration.pipelines) {
            check(pipeline);
        }
    }

private:
    void check(host::ModuleConfiguration const& module) {
        fuzz::promise(!module.moduleName.empty() &&
                          module.moduleName.find_first_of("/.") == std::string::npos,
                      "a module's name stays on the module path");
        fuzz::promise(module.library.empty() || module.library.is_absolute(), "an absolute path");
        fuzz::promise(namesM.insert(module.registeredName).second, "a name stands for one object");
        checkEntry(*registryM.root, module.registeredName);
    }
    void check(host::PipelineConfiguration const& pipeline) {
        fuzz::promise(pipeline.edrDescription.is_absolute(), "an absolute path");
        fuzz::promise(pipeline.batchSize > 0 && pipeline.maxLineLength > 0, "numbers above 0");
        fuzz::promise(pipeline.inputs.empty() == pipeline.inputDirectory.has_value(),
                      "files or a directory");
        fuzz::promise(namesM.insert(pipeline.registeredName).second,
                      "a name stands for one object");
        for (auto const& input : pipeline.inputs) {
            fuzz::promise(rejectFilesM.insert(input.rejectFile).second,
                          "an input's rejects are kept for themselves");
        }
        for (auto const& function : pipeline.functions) {
            check(function);
        }
    }

    host::Registry const& registryM;
    std::set<std::string> namesM;
    std::set<std::filesystem::path> rejectFilesM;
};

} // namespace

// An accepted registry is what the rest of the host relies on, and a check finds nothing in it.
int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    auto const text = fuzz::textOf(data, size);
    bool const isRun =
        fuzz::isAccepted(text, [](auto const& file) { Check(host::readRegistry(file)); });
    std::vector<BAS::Status> problems;
    bool const isUnderstood =
        fuzz::isAccepted(text, [&](auto const& file) { host::readRegistry(file, problems); });
    fuzz::promise(isRun == (isUnderstood && problems.empty()), "a run and a check agree");
    return 0;
}
