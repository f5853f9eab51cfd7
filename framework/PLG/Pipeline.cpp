#include "PLG/Pipeline.h"

namespace PLG {

Pipeline::Pipeline(BAS::String const& name, EDR::Factory const& edrFactory, BAS::LogSink& log)
    : RegisteredObject(name), edrFactoryM(edrFactory), logM(log) {
}

} // namespace PLG
