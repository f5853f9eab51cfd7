#include "PLG/FunctionPlugIn.h"

#include "PLG/Pipeline.h"

namespace PLG {

FunctionPlugIn::FunctionPlugIn(BAS::String const& name, BAS::String const& version)
    : StdPlugIn(name, version), edrFactoryM(nullptr) {
    if (auto const* const own = pipeline()) {
        edrFactoryM = &own->edrFactory();
        return;
    }
    setStatus("ERR_PIPELINE_NOT_FOUND", BAS::Status::critical, name, true);
    std::lock_guard const guard(isValidLockerCM);
    isValidM = false;
}

bool FunctionPlugIn::isActive() const {
    return true;
}

void FunctionPlugIn::loadDependencies(RWTValOrderedVector<BAS::String>& /*moduleNames*/) {
}

} // namespace PLG
