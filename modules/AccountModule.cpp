// The account module of the stand-alone host: the accounts of the reference database in memory.
#include "AccountData.h"
#include "DataModule.h"

#include "DAT/AccountBatchPlugIn.h"

#include <memory>

namespace MOD {

namespace {

class AccountModule : public DataModule<DAT::Account::BatchPlugIn, AccountData> {
public:
    using DataModule::DataModule;

    DBC::DatabasePlugIn* database() const override { return databaseModule(); }

    void getDataDump(std::ostream& out, BAS::String const& customerId, long const& serviceId,
                     BAS::String const& serviceType, BAS::String const& eventType) const override {
        data().dump(out, {customerId.view(), serviceId, serviceType.view(), eventType.view()});
    }
};

} // namespace

} // namespace MOD

// The caller owns the object.
extern "C" [[gnu::visibility("default")]] BAS::RegisteredObject*
DAT_AccountModuleStart(BAS::String const& name) {
    return std::make_unique<MOD::AccountModule>(name).release();
}
