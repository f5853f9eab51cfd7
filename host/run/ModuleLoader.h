// Loads the libraries of function plug-ins and data modules and has their entries build the
// registered objects. A library stays loaded until the process ends, since an exception that it
// threw may outlive its objects.
#pragma once

#include "BAS/RegisteredObject.h"
#include "registry/Registry.h"

#include <filesystem>
#include <memory>
#include <utility>
#include <vector>

namespace host {

class StreamLibrary;

enum class ModuleKind { data, function };

// Thrown when there is no usable object of a module.
struct ModuleFailure : BAS::Status {
    // What the module reported, which is the last argument of the failure; without a message when
    // it reported nothing.
    BAS::Status cause;
};

class ModuleLoader {
public:
    // The directories in which libraries are looked for, in order.
    explicit ModuleLoader(std::vector<std::filesystem::path> searchPath)
        : searchPathM(std::move(searchPath)) {}

    // The directories of the environment variable PIPELINE_HOST_MODULE_PATH, then those that belong
    // to this program's installation or build tree.
    static std::vector<std::filesystem::path> defaultSearchPath();

    // The module's object, ready for use. A function plug-in is a PLG::FunctionPlugIn, a data
    // module any other registered object. Throws a ModuleFailure when the library isn't found or
    // can't be loaded, when its entry is missing or throws, and when the object is of the wrong
    // kind or not usable.
    std::unique_ptr<BAS::RegisteredObject> load(ModuleConfiguration const& module,
                                                ModuleKind kind) const;

    // The library for streams. Throws a BAS::Status when it isn't found or can't be loaded.
    StreamLibrary& loadStreamLibrary() const;

private:
    std::filesystem::path findLibrary(ModuleConfiguration const& module) const;
    std::string nearestModule(ModuleConfiguration const& module) const;

    std::vector<std::filesystem::path> searchPathM;
};

} // namespace host
