// The base of every function plug-in: a module that gets each batch of EDRs in the pipeline stage
// in which it is configured. processEdrContainer runs on the pipeline's thread; the host never runs
// it at the same time as a registryUpdate of the same plug-in.
#pragma once

#include "PLG/StdPlugIn.h"
#include "RW/RWTPtrOrderedVector.h"
#include "RW/RWTValOrderedVector.h"

namespace EDR {
class Container;
class Factory;
} // namespace EDR

namespace PLG {

class FunctionPlugIn : public StdPlugIn {
public:
    // A name outside a pipeline leaves the plug-in invalid, with the status
    // "ERR_PIPELINE_NOT_FOUND".
    FunctionPlugIn(BAS::String const& name, BAS::String const& version);

    // The containers stay the host's. Returns false when the plug-in did nothing with the batch.
    virtual bool processEdrContainer(RWTPtrOrderedVector<EDR::Container>& batch) = 0;
    // An inactive plug-in is skipped.
    virtual bool isActive() const;
    // Appends the registry names of the modules that must be loaded before this one. The
    // stand-alone host doesn't ask: it loads all data modules first, then the functions in their
    // order.
    virtual void loadDependencies(RWTValOrderedVector<BAS::String>& moduleNames);

protected:
    // The pipeline's factory; null only while the plug-in is invalid. Not owned.
    EDR::Factory const* edrFactoryM;
};

} // namespace PLG
