// The balance module of the stand-alone host: the balances of the reference database in memory.
#include "BalanceData.h"
#include "DataModule.h"

#include "DAT/BalancePlugIn.h"

#include <memory>

namespace MOD {

namespace {

class BalanceModule : public DataModule<DAT::Balance::PlugIn, BalanceData> {
public:
    using DataModule::DataModule;

    void getDataDump(std::ostream& out,
                     RWTValOrderedVector<unsigned long> const& balanceGroupIds) const override {
        data().dump(out, balanceGroupIds);
    }
};

} // namespace

} // namespace MOD

// The caller owns the object.
extern "C" [[gnu::visibility("default")]] BAS::RegisteredObject*
DAT_BalanceModuleStart(BAS::String const& name) {
    return std::make_unique<MOD::BalanceModule>(name).release();
}
