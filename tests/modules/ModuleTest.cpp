// The modules as a host loads them: by library and entry name, from a registry.
#include "DAT/LoadSession.h"
#include "DAT/Reloadable.h"
#include "DBC/DatabasePlugIn.h"
#include "RW/RWDBDatabase.h"
#include "RW/RWDBReader.h"

#include "ReferenceDatabase.h"
#include "support/RegistryFixture.h"

#include <dlfcn.h>
#include <gmock/gmock.h>

#include <thread>

using testing::ElementsAre;
using testing::HasSubstr;

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

} // namespace

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

TEST_F(Modules, readNewDataFromOneStateOfTheDatabaseAndKeepTheOldMeanwhile) {
    database.run("COMMIT; PRAGMA journal_mode = WAL; BEGIN;"); // so that others may write meanwhile
    auto const insert = [&](std::string const& number) {
        database.run("INSERT INTO PRICEMODEL VALUES ('P" + number + "', NULL, 'EUR');" +
                     "INSERT INTO BALANCE_GROUP VALUES (" + number + ", 1);");
    };
    auto const login = started("DBC_Database", "Login");
    registry.add("DataPool.Price.Module.Database", "Login");
    auto const price = started("DAT_Price", "Price");
    auto const balance = startedData("DAT_Balance");
    auto& prices = dynamic_cast<DAT::Reloadable&>(*price);
    auto& balances = dynamic_cast<DAT::Reloadable&>(*balance);

    insert("1");
    DAT::LoadSession session;
    auto const newPrices = prices.readNewData(session);
    insert("2");
    auto const newBalances = balances.readNewData(session);
    EXPECT_EQ(prices.loadReport().rows(), 0U);
    newPrices->takeOver();
    newBalances->takeOver();
    EXPECT_EQ(prices.loadReport().rows(), 1U);
    EXPECT_EQ(balances.loadReport().rows(), 1U) << "of the state that the prices are of";
    EXPECT_EQ(balances.loadReport().tables.front().name, "BALANCE_GROUP");
    EXPECT_THAT(balances.loadReport().source.str(), HasSubstr("reference.db"));
    DAT::LoadSession later;
    EXPECT_EQ(balances.readNewData(later)->report().rows(), 2U);

    std::stop_source stop;
    stop.request_stop();
    DAT::LoadSession stopped(stop.get_token());
    EXPECT_THROW(balances.readNewData(stopped), BAS::Status);
}

TEST_F(Modules, keepTheStatusOfABadRowOutOfTheirOwn) {
    database.run("INSERT INTO ACCOUNT VALUES (1, NULL, 'EUR', NULL);");
    auto const login = started("DBC_Database", "Login");
    auto const account = startedData("DAT_Account");
    EXPECT_TRUE(account->isUsable());
    EXPECT_TRUE(account->status().messageName().isNull());
    EXPECT_THAT(registry.log.entries(),
                ElementsAre("ERR_ROW_REJECTED(3) [ACCOUNT] [ACCOUNT_ID '1'] [STATUS is missing] "
                            "@host.DataPool.Data.Module",
                            HasSubstr("MSG_DATA_LOADED(1) [0] [1] ")));
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
    auto entries = registry.log.entries().size();
    for (auto const& [module, reference, entry] : cases) {
        auto const object = started(module, reference);
        EXPECT_FALSE(object->isUsable());
        auto const log = registry.log.entries();
        ASSERT_EQ(log.size(), ++entries) << entry;
        EXPECT_EQ(log.back(), std::string(entry) + " @host.DataPool." + reference + ".Module");
    }
}
