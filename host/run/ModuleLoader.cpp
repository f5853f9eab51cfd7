#include "run/ModuleLoader.h"

#include "PLG/FunctionPlugIn.h"
#include "base/Failures.h"
#include "base/MessageCatalogue.h"
#include "base/NearestName.h"
#include "input/StreamLibrary.h"

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <cstdlib>

namespace host {

namespace {

using Entry = BAS::RegisteredObject*(BAS::String const&);

constexpr char const* searchPathVariable = "PIPELINE_HOST_MODULE_PATH";
// The directories of modules relative to the program's: in the build tree and in an installation.
constexpr std::array moduleDirectories = {"../lib/pipeline-host",
                                          "../" PIPELINE_HOST_LIBDIR "/pipeline-host"};

ModuleFailure failure(ModuleConfiguration const& module, MessageName name,
                      std::initializer_list<std::string> arguments,
                      BAS::Status const& cause = BAS::Status()) {
    return {makeStatus(BAS::Status::critical, module.registeredName, name, arguments), cause};
}

void* openLibrary(ModuleConfiguration const& module, std::filesystem::path const& library) {
    void* const handle = ::dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        throw failure(module, "ERR_LIBRARY_NOT_LOADED", {library.string(), ::dlerror()});
    }
    return handle;
}

Entry& findEntry(ModuleConfiguration const& module, void* library,
                 std::filesystem::path const& path) {
    auto const name = module.moduleName + "ModuleStart";
    void* const entry = ::dlsym(library, name.c_str());
    if (entry == nullptr) {
        throw failure(
            module, "ERR_MODULE_ENTRY_NOT_FOUND",
            {path.string(), name, nearestNameHint(module.moduleName, {path.stem().native()})});
    }
    return *reinterpret_cast<Entry*>(entry);
}

std::unique_ptr<BAS::RegisteredObject> callEntry(ModuleConfiguration const& module, Entry& entry,
                                                 std::filesystem::path const& library) {
    std::unique_ptr<BAS::RegisteredObject> object;
    std::string reason = "it returned no object";
    BAS::Status cause;
    try {
        object.reset(entry(module.registeredName));
    } catch (BAS::Status const& status) {
        cause = status;
        reason = statusText(status);
    } catch (...) {
        reason = currentExceptionText();
    }
    if (object == nullptr) {
        throw failure(module, "ERR_MODULE_ENTRY_FAILED",
                      {library.string(), module.moduleName + "ModuleStart", reason}, cause);
    }
    return object;
}

void requireKind(ModuleConfiguration const& module, ModuleKind kind,
                 BAS::RegisteredObject const& object) {
    static constexpr char const* names[] = {"a data module", "a function plug-in"};
    auto const got = dynamic_cast<PLG::FunctionPlugIn const*>(&object) != nullptr
                         ? ModuleKind::function
                         : ModuleKind::data;
    if (got != kind) {
        throw failure(
            module, "ERR_MODULE_KIND_WRONG",
            {module.moduleName, names[static_cast<int>(kind)], names[static_cast<int>(got)]});
    }
}

void requireUsable(ModuleConfiguration const& module, BAS::RegisteredObject& object) {
    std::string reason;
    BAS::Status cause;
    try {
        if (object.isUsable()) {
            return;
        }
        cause = object.status();
        reason = statusText(cause);
    } catch (...) {
        reason = currentExceptionText();
    }
    throw failure(module, "ERR_MODULE_NOT_USABLE", {module.moduleName, reason}, cause);
}

} // namespace

std::vector<std::filesystem::path> ModuleLoader::defaultSearchPath() {
    std::vector<std::filesystem::path> searchPath;
    if (char const* const given = std::getenv(searchPathVariable)) {
        for (auto const& directory : BAS::String(given).split(':')) {
            if (!directory.isNull()) {
                searchPath.emplace_back(directory.str());
            }
        }
    }
    auto const program = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    for (auto const* const directory : moduleDirectories) {
        auto const resolved = (program / directory).lexically_normal();
        if (std::find(searchPath.begin(), searchPath.end(), resolved) == searchPath.end()) {
            searchPath.push_back(resolved);
        }
    }
    return searchPath;
}

std::unique_ptr<BAS::RegisteredObject> ModuleLoader::load(ModuleConfiguration const& module,
                                                          ModuleKind kind) const {
    auto const library = findLibrary(module);
    auto& entry = findEntry(module, openLibrary(module, library), library);
    auto object = callEntry(module, entry, library);
    requireKind(module, kind, *object);
    requireUsable(module, *object);
    return object;
}

std::filesystem::path ModuleLoader::findLibrary(ModuleConfiguration const& module) const {
    std::vector<std::filesystem::path> candidates;
    if (module.library.empty()) {
        for (auto const& directory : searchPathM) {
            candidates.push_back(directory / (module.moduleName + ".so"));
        }
    } else {
        candidates.push_back(module.library);
    }
    std::string tried;
    for (auto const& candidate : candidates) {
        std::error_code error;
        if (std::filesystem::exists(candidate, error)) {
            return candidate;
        }
        tried += (tried.empty() ? "" : ", ") + candidate.string();
    }
    throw failure(module, "ERR_LIBRARY_NOT_FOUND",
                  {module.moduleName, tried, module.library.empty() ? nearestModule(module) : ""});
}

// The hint for the name of a module that isn't there.
std::string ModuleLoader::nearestModule(ModuleConfiguration const& module) const {
    std::vector<std::string> names;
    for (auto const& directory : searchPathM) {
        std::error_code error;
        std::filesystem::directory_iterator entry(directory, error);
        for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
            if (entry->path().extension() == ".so") {
                names.push_back(entry->path().stem().string());
            }
        }
    }
    return nearestNameHint(module.moduleName, {names.begin(), names.end()});
}

StreamLibrary& ModuleLoader::loadStreamLibrary() const {
    ModuleConfiguration library;
    library.moduleName = streamLibrary;
    auto const path = findLibrary(library);
    auto* const entry = ::dlsym(openLibrary(library, path), streamLibraryEntry);
    if (entry == nullptr) {
        throw failure(library, "ERR_MODULE_ENTRY_NOT_FOUND", {path.string(), streamLibraryEntry});
    }
    return (*reinterpret_cast<StreamLibraryEntry*>(entry))();
}

} // namespace host
