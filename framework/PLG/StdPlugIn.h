// The base of every loadable module: a registered object with a version and a life cycle. The host
// builds it through the module's entry, owns it from then on and deletes it at shutdown.
#pragma once

#include "BAS/RegisteredObject.h"
#include "PLG/LifecycleInterface.h"

namespace PLG {

class Pipeline;

class StdPlugIn : public BAS::RegisteredObject, public LifecycleInterface {
public:
    StdPlugIn(BAS::String const& name, BAS::String const& version);

    BAS::String const& version() const noexcept { return versionM; }

    // The host calls init and finalInit once every object exists, install and startup before the
    // first batch, shutdown and uninstall after the last. Each returns whether it succeeded; by
    // default there is nothing to do.
    virtual bool init();
    virtual bool finalInit();
    bool shutdown() override;
    bool startup() override;
    bool install() override;
    bool uninstall() override;

    // Writes to the log of the pipeline that the plug-in runs in; to no log outside a pipeline.
    void writeToPipelineLog(BAS::Status const& status) const;

protected:
    // The pipeline that the plug-in runs in, or null.
    Pipeline* pipeline() const;

private:
    BAS::String versionM;
};

} // namespace PLG
