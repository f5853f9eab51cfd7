// What may have been meant by a name that isn't there.
#include "run/NameHints.h"

#include "EDR/Description.h"
#include "support/TemporaryDirectory.h"

#include <gtest/gtest.h>

namespace {

std::string const registryText = R"(host:
  DataPool:
    Login: {ModuleName: DBC_Database}
    PriceData: {ModuleName: DAT_Price, Module: {Databse: Login}}
  Pipelines:
    Main:
      EdrDescription: edr.yaml
      Input: {Files: [x]}
      Functions:
        Dump: {ModuleName: FCT_DataDump, Module: {AcountDataModule: x, PriceDataModule: Login}}
)";

TEST(NameHints, NameWhatIsNear) {
    support::TemporaryDirectory const directory;
    auto const registry = host::readRegistry(directory.write("r.yaml", registryText));
    std::string const price = "host.DataPool.PriceData.Module";
    std::string const dump = "host.Pipelines.Main.Functions.Dump.Module";
    host::subtreeOf(registry, dump)->find("PriceDataModule"); // as the plug-in does
    EDR::Description description;
    auto const block = description.addBlock(EDR::Description::root(), "CUST_A");
    description.addField(block, "SERVICE_ID", EDR::FieldType::text);
    description.addField(EDR::Description::root(), "SERVICE_TYPE", EDR::FieldType::text);
    host::NameHints const hints(
        registry, [&](auto const& object) { return object == dump ? &description : nullptr; });
    struct {
        char const* message;
        std::string object;
        char const* argument;
        std::size_t arguments; // in all
        char const* hint;
    } const cases[] = {
        {"ERR_DATA_PLUGIN_NOT_FOUND", price, "Logn", 1, " (did you mean 'Login'?)"},
        {"ERR_DATA_PLUGIN_NOT_FOUND", dump, "host.DataPool.Logn", 1,
         " (did you mean 'host.DataPool.Login'?)"},
        {"ERR_DATA_PLUGIN_NOT_FOUND", price, "Nothing", 1, nullptr},
        {"ERR_PLUGIN_TYPE_INVALID", dump, "Login", 1,
         " (a DBC_Database, named by 'PriceDataModule')"},
        {"ERR_PLUGIN_TYPE_INVALID", dump, "PriceDta", 1, " (did you mean 'PriceData'?)"},
        {"ERR_REG_ENTRY_NOT_FOUND", dump, "AccountDataModule", 1,
         " (did you mean it by 'AcountDataModule'?)"},
        {"ERR_REG_ENTRY_NOT_FOUND", price, "Database", 1, " (did you mean it by 'Databse'?)"},
        {"ERR_REG_ENTRY_NOT_FOUND", "host.Other", "Database", 1, nullptr},
        {"ERR_EDR_FIELD_NOT_FOUND", dump, "DETAIL.CUST_A.SERVCE_ID", 4,
         " (did you mean 'SERVICE_ID'?)"},
        {"ERR_EDR_FIELD_NOT_FOUND", dump, "DETAIL.SERVICE_ID", 4, nullptr}, // in another block
        {"ERR_EDR_FIELD_NOT_FOUND", price, "DETAIL.CUST_A.SERVCE_ID", 4, nullptr},
        {"ERR_EDR_BLOCK_NOT_FOUND", dump, "DETAIL.CUSTA", 4, " (did you mean 'CUST_A'?)"},
        {"ERR_DATABASE", price, "Logn", 1, nullptr},
    };
    for (auto const& each : cases) {
        SCOPED_TRACE(each.argument);
        BAS::Status status(each.message, BAS::Status::critical, each.argument);
        status.setObjectName(each.object);
        while (status.arguments().entries() < each.arguments) {
            status.arguments().append("");
        }
        auto const hinted = hints.withHint(status);
        ASSERT_EQ(hinted.arguments().entries(), each.arguments + (each.hint == nullptr ? 0 : 1));
        if (each.hint != nullptr) {
            EXPECT_EQ(hinted.arguments()[each.arguments], each.hint);
        }
        EXPECT_EQ(hints.withHint(hinted).arguments().entries(), hinted.arguments().entries());
    }
}

} // namespace
