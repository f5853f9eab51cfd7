#include "PLG/StdPlugIn.h"

#include "BAS/LogSink.h"
#include "PLG/Pipeline.h"

namespace PLG {

StdPlugIn::StdPlugIn(BAS::String const& name, BAS::String const& version)
    : RegisteredObject(name), versionM(version) {
}

bool StdPlugIn::init() {
    return true;
}

bool StdPlugIn::finalInit() {
    return true;
}

bool StdPlugIn::shutdown() {
    return true;
}

bool StdPlugIn::startup() {
    return true;
}

bool StdPlugIn::install() {
    return true;
}

bool StdPlugIn::uninstall() {
    return true;
}

void StdPlugIn::writeToPipelineLog(BAS::Status const& status) const {
    if (auto const* const own = pipeline()) {
        own->log().write(status);
    }
}

Pipeline* StdPlugIn::pipeline() const {
    return dynamic_cast<Pipeline*>(find(superName("Pipelines")));
}

} // namespace PLG
