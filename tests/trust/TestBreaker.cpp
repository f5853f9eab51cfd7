// A data module that does harm when it is loaded: it runs the shell command of its registry key
// "Command".
#include "BAS/RegisteredObject.h"
#include "BAS/RegistryEntry.h"

#include <cstdlib>
#include <memory>
#include <stdexcept>

extern "C" BAS::RegisteredObject* TestBreakerModuleStart(BAS::String const& name) {
    auto breaker = std::make_unique<BAS::RegisteredObject>(name);
    if (std::system(breaker->registry()->find("Command")->value().str().c_str()) != 0) {
        throw std::runtime_error("nothing was broken");
    }
    return breaker.release();
}
