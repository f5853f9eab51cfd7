// The modules as a host loads them: by library and entry name, from a registry.
#include "DAT/AccountBatchPlugIn.h"
#include "DAT/BalancePlugIn.h"
#include "DAT/DiscountPlugIn.h"
#include "DAT/RatingPricePlugIn.h"
#include "DAT/RatingRateplanPlugIn.h"
#include "DBC/DatabasePlugIn.h"
#include "RW/RWDBDatabase.h"
#include "RW/RWDBReader.h"

#include "ReferenceDatabase.h"
#include "support/RegistryFixture.h"

#include <dlfcn.h>
#include <gmock/gmock.h>

#include <iomanip>
#include <thread>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::unique_ptr<BAS::RegisteredObject> started(std::string const& moduleName,
                                               std::string const& reference) {
    using Start = BAS::RegisteredObject*(BAS::String const&);
    auto const library = MODULE_DIRECTORY "/" + moduleName + ".so";
    void* const handle = dlopen(library.c_str(), RTLD_NOW | RTLD_NODELETE);
    void* const entry =
        handle == nullptr ? nullptr : dlsym(handle, (moduleName + "ModuleStart").c_str());
    if (entry == nullptr) {
        throw std::runtime_error(dlerror());
    }
    return std::unique_ptr<BAS::RegisteredObject>(
        reinterpret_cast<Start*>(entry)("host.DataPool." + reference + ".Module"));
}

class Modules : public testing::Test {
protected:
    Modules() { registry.add("DataPool.Login.Module.Connection", "sqlite3://db=reference.db"); }

    // A data module that loads through the database module "Login".
    std::unique_ptr<BAS::RegisteredObject> startedData(std::string const& moduleName) {
        registry.add("DataPool.Data.Module.Database", "Login");
        return started(moduleName, "Data");
    }

    ReferenceDatabase database;
    support::RegistryFixture registry{database.directory().string()};
};

// Runs a dump of the module on a stream that pads its first value with dots.
template <class Module, class Dump>
std::string dump(BAS::RegisteredObject& object, Dump const& run) {
    std::ostringstream out;
    out << std::setfill('.') << std::setw(10);
    run(dynamic_cast<Module&>(object), out);
    return out.str();
}

} // namespace

TEST_F(Modules, startAsTheClassesThatPlugInsLookForAndForwardTheirDumps) {
    auto const login = started("DBC_Database", "Login");
    registry.add("DataPool.Data.Module.Database", "Login");
    auto const account = started("DAT_Account", "Data");
    EXPECT_EQ(dynamic_cast<DAT::Account::BatchPlugIn&>(*account).database(), login.get());
    EXPECT_EQ((dump<DAT::Account::BatchPlugIn>(
                  *account,
                  [](auto& module, auto& out) { module.getDataDump(out, "4917", 3L, "s", "e"); })),
              "..Customer identifier 4917: not in memory");
    registry.add("DataPool.Plan.Module.Database", "host.DataPool.Login");
    auto const rateplan = started("DAT_Rateplan", "Plan");
    EXPECT_EQ((dump<DAT::Rating::RateplanPlugIn>(
                  *rateplan,
                  [](auto& module, auto& out) { module.getDataDump(out, "R", 3L, "", "", ""); })),
              "......Rate plan R version 3: not in memory");
    registry.add("DataPool.Price.Module.Database", "Login");
    auto const price = started("DAT_Price", "Price");
    EXPECT_EQ((dump<DAT::Rating::PricePlugIn>(
                  *price, [](auto& module, auto& out) { module.getDataDump(out, {"P"}); })),
              ".........1 price model asked\n  price model P: not in memory");
    registry.add("DataPool.Balance.Module.Database", "Login");
    auto const balance = started("DAT_Balance", "Balance");
    EXPECT_EQ((dump<DAT::Balance::PlugIn>(
                  *balance, [](auto& module, auto& out) { module.getDataDump(out, {}); })),
              ".........0 balance groups asked\n");
    EXPECT_THAT(registry.log.entries(), IsEmpty());
}

TEST_F(Modules, dumpThreeKindsOfDiscountData) {
    auto const login = started("DBC_Database", "Login");
    auto const discount = startedData("DAT_Discount");
    EXPECT_EQ((dump<DAT::Discount::PlugIn>(*discount,
                                           [](auto& module, auto& out) {
                                               module.getDiscountObjectDataDump(out, {1});
                                               module.getSponsorshipObjectDataDump(out, {2});
                                               RWTValOrderedVector<BAS::String> names{"M"};
                                               module.getDscModelDataDump(out, names);
                                           })),
              ".........1 discount object asked\n    discount object 1: not in memory\n"
              "1 sponsorship object asked\n    sponsorship object 2: not in memory\n"
              "1 discount model asked\n    discount model M: not in memory\n");
}

TEST_F(Modules, giveEachThreadAConnectionThatOnlyReads) {
    auto const login = started("DBC_Database", "Login");
    auto const& module = dynamic_cast<DBC::DatabasePlugIn&>(*login);
    database.run("INSERT INTO ACCOUNT VALUES (1, 'ACTIVE', 'EUR', NULL);");
    std::vector<int> rows(4);
    std::vector<std::thread> threads;
    threads.reserve(rows.size());
    for (auto& count : rows) {
        threads.emplace_back([&module, &count] {
            auto const source = module.connection().database();
            auto selector = source.selector();
            selector << source.table("ACCOUNT")["ACCOUNT_ID"];
            auto reader = selector.reader();
            while (reader()) {
                ++count;
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_THAT(rows, ElementsAre(1, 1, 1, 1));
}

TEST_F(Modules, keepTheStatusOfABadRowOutOfTheirOwn) {
    database.run("INSERT INTO ACCOUNT VALUES (1, NULL, 'EUR', NULL);");
    auto const login = started("DBC_Database", "Login");
    auto const account = startedData("DAT_Account");
    EXPECT_TRUE(account->isUsable());
    EXPECT_TRUE(account->status().messageName().isNull());
    EXPECT_THAT(registry.log.entries(),
                ElementsAre("ERR_ROW_REJECTED(3) [ACCOUNT] [ACCOUNT_ID '1'] [STATUS is missing] "
                            "@host.DataPool.Data.Module"));
}

TEST_F(Modules, staysInvalidWithOneErrorWhenATableIsMissing) {
    database.run("DROP TABLE ACCOUNT_PRODUCT;");
    auto const login = started("DBC_Database", "Login");
    auto const account = startedData("DAT_Account");
    EXPECT_FALSE(account->isUsable());
    EXPECT_EQ(dynamic_cast<DAT::Account::BatchPlugIn&>(*account).database(), nullptr);
    EXPECT_THAT(
        registry.log.entries(),
        ElementsAre(testing::StartsWith("ERR_DATABASE(5) [table ACCOUNT_PRODUCT can't be read: ")));
    EXPECT_EQ(account->status().messageName(), BAS::String("ERR_DATABASE"));
}

TEST_F(Modules, reportWhatTheirRegistryLacks) {
    auto const login = started("DBC_Database", "Login");
    registry.add("DataPool.Empty.Module");
    registry.add("DataPool.Unknown.Module.Database", "Nobody");
    registry.add("DataPool.Good.Module.Database", "Login");
    registry.add("DataPool.Wrong.Module.Database", "Good");
    auto const good = started("DAT_Balance", "Good");
    struct {
        char const* module;
        char const* reference;
        char const* entry;
    } const cases[] = {
        {"DAT_Balance", "None", "ERR_REG_SUBTREE_NOT_FOUND(5) [host.DataPool.None.Module]"},
        {"DAT_Balance", "Empty", "ERR_REG_ENTRY_NOT_FOUND(5) [Database]"},
        {"DAT_Balance", "Unknown", "ERR_DATA_PLUGIN_NOT_FOUND(5) [Nobody]"},
        {"DAT_Balance", "Wrong", "ERR_PLUGIN_TYPE_INVALID(5) [Good]"},
        {"DBC_Database", "None", "ERR_REG_SUBTREE_NOT_FOUND(5) [host.DataPool.None.Module]"},
        {"DBC_Database", "Empty", "ERR_REG_ENTRY_NOT_FOUND(5) [Connection]"},
    };
    std::size_t entries = 0;
    for (auto const& [module, reference, entry] : cases) {
        auto const object = started(module, reference);
        EXPECT_FALSE(object->isUsable());
        auto const log = registry.log.entries();
        ASSERT_EQ(log.size(), ++entries) << entry;
        EXPECT_EQ(log.back(), std::string(entry) + " @host.DataPool." + reference + ".Module");
    }
}

TEST_F(Modules, neverMakeADatabaseFile) {
    registry.add("DataPool.Typo.Module.Connection", "sqlite3://db=refrence.db");
    auto const typo = started("DBC_Database", "Typo");
    auto const file = database.directory() / "refrence.db";
    EXPECT_FALSE(typo->isUsable());
    EXPECT_FALSE(std::filesystem::exists(file));
    EXPECT_THAT(registry.log.entries(),
                ElementsAre("ERR_DATABASE(5) [the database file '" + file.string() +
                            "' does not exist] @host.DataPool.Typo.Module"));

    registry.add("DataPool.Data.Module.Database", "Typo");
    auto const account = started("DAT_Account", "Data");
    EXPECT_FALSE(account->isUsable());
    EXPECT_FALSE(std::filesystem::exists(file));
}
