// A data module without data. Named "Nothing", it comes out as no object at all.
#include "Trace.h"

#include "PLG/StdPlugIn.h"

namespace {

class Data : public PLG::StdPlugIn {
public:
    explicit Data(BAS::String const& name) : StdPlugIn(name, "1") { traceM.step("build"); }
    ~Data() override { traceM.note("destroy"); }

    bool startup() override { return traceM.step("startup"); }
    bool shutdown() override { return traceM.step("shutdown"); }

private:
    Trace traceM{*this};
};

} // namespace

extern "C" BAS::RegisteredObject* TestDataModuleStart(BAS::String const& name) {
    return name.view().ends_with(".Nothing.Module") ? nullptr : new Data(name);
}
