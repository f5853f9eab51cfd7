// The rate plan module of the stand-alone host: the rate plans of the reference database in memory.
#include "DataModule.h"
#include "RateplanData.h"

#include "DAT/RatingRateplanPlugIn.h"

#include <memory>

namespace MOD {

namespace {

class RateplanModule : public DataModule<DAT::Rating::RateplanPlugIn, RateplanData> {
public:
    using DataModule::DataModule;

    void getDataDump(std::ostream& out, BAS::String const& ratePlanCode, long const& version,
                     BAS::String const& serviceCode, BAS::String const& serviceClass,
                     BAS::String const& impactCategory) const override {
        data().dump(out, {ratePlanCode.view(), version, serviceCode.view(), serviceClass.view(),
                          impactCategory.view()});
    }
};

} // namespace

} // namespace MOD

// The caller owns the object.
extern "C" [[gnu::visibility("default")]] BAS::RegisteredObject*
DAT_RateplanModuleStart(BAS::String const& name) {
    return std::make_unique<MOD::RateplanModule>(name).release();
}
