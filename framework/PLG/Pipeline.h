// What a plug-in can reach of the pipeline it runs in: the EDR factory and the pipeline's log. The
// host registers one for each pipeline, under the pipeline's registry name and before the plug-ins
// of the pipeline are built, and owns it. Factory and log stay the host's and must outlive it.
#pragma once

#include "BAS/RegisteredObject.h"

namespace EDR {
class Factory;
}

namespace PLG {

class Pipeline : public BAS::RegisteredObject {
public:
    Pipeline(BAS::String const& name, EDR::Factory const& edrFactory, BAS::LogSink& log);

    EDR::Factory const& edrFactory() const noexcept { return edrFactoryM; }
    BAS::LogSink& log() const noexcept { return logM; }

private:
    EDR::Factory const& edrFactoryM;
    BAS::LogSink& logM;
};

} // namespace PLG
