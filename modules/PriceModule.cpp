// The price module of the stand-alone host: the price models of the reference database in memory.
#include "DataModule.h"
#include "PriceData.h"

#include "DAT/RatingPricePlugIn.h"

#include <memory>

namespace MOD {

namespace {

class PriceModule : public DataModule<DAT::Rating::PricePlugIn, PriceData> {
public:
    using DataModule::DataModule;

    void getDataDump(std::ostream& out,
                     RWTValOrderedVector<BAS::String> const& priceModelCodes) override {
        data().dump(out, priceModelCodes);
    }
};

} // namespace

} // namespace MOD

// The caller owns the object.
extern "C" [[gnu::visibility("default")]] BAS::RegisteredObject*
DAT_PriceModuleStart(BAS::String const& name) {
    return std::make_unique<MOD::PriceModule>(name).release();
}
