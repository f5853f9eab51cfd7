// The discount module of the stand-alone host: the discounts and sponsorships of the reference
// database in memory.
#include "DataModule.h"
#include "DiscountData.h"

#include "DAT/DiscountPlugIn.h"

#include <memory>

namespace MOD {

namespace {

class DiscountModule : public DataModule<DAT::Discount::PlugIn, DiscountData> {
public:
    using DataModule::DataModule;

    void getDiscountObjectDataDump(
        std::ostream& out, RWTValOrderedVector<unsigned long> const& discountIds) const override {
        data().dumpDiscounts(out, discountIds);
    }

    void getSponsorshipObjectDataDump(
        std::ostream& out,
        RWTValOrderedVector<unsigned long> const& sponsorshipIds) const override {
        data().dumpSponsorships(out, sponsorshipIds);
    }

    void getDscModelDataDump(std::ostream& out,
                             RWTValOrderedVector<BAS::String>& modelNames) override {
        data().dumpModels(out, modelNames);
    }
};

} // namespace

} // namespace MOD

// The caller owns the object.
extern "C" [[gnu::visibility("default")]] BAS::RegisteredObject*
DAT_DiscountModuleStart(BAS::String const& name) {
    return std::make_unique<MOD::DiscountModule>(name).release();
}
