#include "PLG/FunctionPlugIn.h"

struct Count : PLG::FunctionPlugIn {
    explicit Count(BAS::String const& name) : FunctionPlugIn(name, "1") {}
    bool processEdrContainer(RWTPtrOrderedVector<EDR::Container>& batch) override {
        BAS::Status status("COUNTED", BAS::Status::info, std::to_string(batch.entries()));
        status.setObjectName(name());
        writeToPipelineLog(status);
        return true;
    }
};

extern "C" __attribute__((visibility("default"))) BAS::RegisteredObject*
FCT_CountModuleStart(BAS::String const& name) {
    return new Count(name);
}
