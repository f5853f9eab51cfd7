// Start-up: the registry, the EDR handles and the service field map, and what is reported when one
// of them isn't as it should be.
#include "PlugInFixture.h"

#include <fstream>
#include <future>
#include <thread>

namespace DataDumpTest {

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::string const at = " @" + plugInName;

} // namespace

TEST_F(PlugInFixture, AccountModuleAloneMakesAUsablePlugIn) {
    auto& started = start();
    EXPECT_TRUE(started.isUsable());
    EXPECT_THAT(registry.log.entries(), IsEmpty());
    EXPECT_EQ(started.accountDataModule, account.get());
    EXPECT_EQ(started.accountDatabase, database.get());
    EXPECT_EQ(started.discountDataModule, nullptr);
    EXPECT_EQ(started.balanceDataModule, nullptr);
    EXPECT_EQ(started.rateplanDataModule, nullptr);
    EXPECT_EQ(started.priceDataModule, nullptr);
    EXPECT_EQ(started.numberOfEvents, 10U);
    EXPECT_THAT(texts(started.cbdRecordTypes), ElementsAre("981"));
    EXPECT_THAT(texts(started.ratePlanTypes), ElementsAre("R"));
    EXPECT_EQ(started.version(), "10003");
}

TEST_F(PlugInFixture, ModulesAreFoundByFullNameBeforeThePool) {
    keys["AccountDataModule"] = "CustomerData";
    AccountModule named("CustomerData.Module", nullptr, calls);
    keys["BalanceDataModule"] = "Balances";
    BalanceModule pooled("host.DataPool.Balances.Module", calls);
    auto& started = start();
    EXPECT_EQ(started.accountDataModule, &named);
    EXPECT_EQ(started.balanceDataModule, &pooled);
    EXPECT_FALSE(started.isUsable());
    EXPECT_THAT(
        registry.log.entries(),
        ElementsAre("ERR_DATABASE(5) [the account data module has no database connection]" + at));
}

struct RegistryCase {
    char const* title;
    std::map<std::string, std::string> keys;
    std::vector<std::string> log;
};

class RegistryErrors : public PlugInFixture, public testing::WithParamInterface<RegistryCase> {};

TEST_P(RegistryErrors, StopTheStartAndAreLoggedInOrder) {
    RateplanModule rateplans("host.DataPool.Rateplans.Module", calls);
    keys = GetParam().keys;
    keys["NumberOfEvents"] = "5";
    keys["ChargeBreakDownRecordType"] = "982";
    auto& started = start();
    EXPECT_FALSE(started.isUsable());
    EXPECT_THAT(registry.log.entries(), testing::ElementsAreArray(GetParam().log));
    EXPECT_EQ(started.status().messageName(),
              GetParam().log.back().substr(0, GetParam().log.back().find('(')));
    // Keys after the error are not read, and the later steps of the start are not taken.
    EXPECT_EQ(started.numberOfEvents, 3U);
    EXPECT_THAT(texts(started.cbdRecordTypes), ElementsAre("981"));
    EXPECT_THAT(texts(started.ratePlanTypes), ElementsAre("R"));
    EXPECT_FALSE(started.fields.idxANumber.isValid());
    RWTPtrOrderedVector<EDR::Container> batch;
    EXPECT_FALSE(started.processEdrContainer(batch));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, RegistryErrors,
    testing::Values(
        RegistryCase{"NoAccount", {}, {"ERR_REG_ENTRY_NOT_FOUND(5) [AccountDataModule]" + at}},
        RegistryCase{"AccountNotThere",
                     {{"AccountDataModule", "Nobody"}},
                     {"ERR_DATA_PLUGIN_NOT_FOUND(5) [Nobody]" + at,
                      "ERR_PLUGIN_TYPE_INVALID(5) [Nobody]" + at}},
        RegistryCase{"DiscountOfAnotherKind",
                     {{"AccountDataModule", "CustomerData"}, {"DiscountDataModule", "Rateplans"}},
                     {"ERR_PLUGIN_TYPE_INVALID(5) [Rateplans]" + at}},
        RegistryCase{"DiscountNotThere",
                     {{"AccountDataModule", "CustomerData"}, {"DiscountDataModule", "Nobody"}},
                     {"ERR_DATA_PLUGIN_NOT_FOUND(5) [Nobody]" + at,
                      "ERR_PLUGIN_TYPE_INVALID(5) [Nobody]" + at}},
        RegistryCase{"AccountIsARateplan",
                     {{"AccountDataModule", "Rateplans"}},
                     {"ERR_PLUGIN_TYPE_INVALID(5) [Rateplans]" + at}},
        RegistryCase{"BalanceIsAnAccount",
                     {{"AccountDataModule", "CustomerData"}, {"BalanceDataModule", "CustomerData"}},
                     {"ERR_PLUGIN_TYPE_INVALID(5) [CustomerData]" + at}},
        RegistryCase{"RateplanNotThere",
                     {{"AccountDataModule", "CustomerData"}, {"RateplanDataModule", "Nobody"}},
                     {"ERR_DATA_PLUGIN_NOT_FOUND(5) [Nobody]" + at,
                      "ERR_PLUGIN_TYPE_INVALID(5) [Nobody]" + at}},
        RegistryCase{
            "RateplanIsAnAccount",
            {{"AccountDataModule", "CustomerData"}, {"RateplanDataModule", "CustomerData"}},
            {"ERR_PLUGIN_TYPE_INVALID(5) [CustomerData]" + at}},
        RegistryCase{"PriceNotThere",
                     {{"AccountDataModule", "CustomerData"}, {"PriceDataModule", "Nobody"}},
                     {"ERR_DATA_PLUGIN_NOT_FOUND(5) [Nobody]" + at,
                      "ERR_PLUGIN_TYPE_INVALID(5) [Nobody]" + at}},
        RegistryCase{
            "BalanceNotThere",
            {{"AccountDataModule", "CustomerData"}, {"BalanceDataModule", ""}},
            {"ERR_DATA_PLUGIN_NOT_FOUND(5) []" + at, "ERR_PLUGIN_TYPE_INVALID(5) []" + at}},
        RegistryCase{"PriceIsARateplan",
                     {{"AccountDataModule", "CustomerData"},
                      {"RateplanDataModule", "Rateplans"},
                      {"PriceDataModule", "Rateplans"}},
                     {"ERR_PLUGIN_TYPE_INVALID(5) [Rateplans]" + at}}),
    [](auto const& tested) { return tested.param.title; });

TEST_F(PlugInFixture, WithoutASubtreeOrARegistrationNothingIsRead) {
    // The subtree belongs to another name.
    std::string const other = "host.Pipelines.Main.Functions.Other.Module";
    EXPECT_FALSE(start(other).isUsable());
    EXPECT_THAT(registry.log.entries(),
                ElementsAre("ERR_REG_SUBTREE_NOT_FOUND(5) [" + other + "] @" + other));
    // A name that is taken leaves the newcomer unregistered, without a message of its own.
    Probe second(other);
    EXPECT_FALSE(second.isUsable());
    EXPECT_EQ(second.numberOfEvents, 3U);
    EXPECT_THAT(texts(second.ratePlanTypes), ElementsAre("R"));
    EXPECT_EQ(registry.log.entries().size(), 1U);
}

class MissingName : public PlugInFixture, public testing::WithParamInterface<std::string> {};

TEST_P(MissingName, OfTheDescriptionMakesThePlugInUnusable) {
    leftOutOfDescription = GetParam();
    EXPECT_FALSE(start().isUsable());
    ASSERT_EQ(registry.log.entries().size(), 1U);
    EXPECT_THAT(registry.log.entries()[0], testing::HasSubstr("_NOT_FOUND(5) [" + GetParam()));
    EXPECT_THAT(registry.log.entries()[0], testing::EndsWith(at));
    EXPECT_EQ(registry.pipelineLog.entries(), registry.log.entries());
}

std::string lastParts(testing::TestParamInfo<std::string> const& info) {
    auto name = info.param;
    std::replace(name.begin(), name.end(), '.', '_');
    return name;
}
INSTANTIATE_TEST_SUITE_P(Fields, MissingName, testing::ValuesIn(boundFields), lastParts);
// Blocks with bound fields are missed by those fields first; these two have none.
INSTANTIATE_TEST_SUITE_P(Blocks, MissingName, testing::Values("DETAIL.ASS_CBD.DP.SUB_BALANCE"),
                         lastParts);

// What stands in the first column of a table of the operator's guide.
std::vector<std::string> fieldsOfTheGuide() {
    std::ifstream guide(SOURCES "/docs/operators-guide.md");
    std::vector<std::string> paths;
    std::string const begin = "| `DETAIL.";
    for (std::string line; std::getline(guide, line);) {
        if (line.starts_with(begin)) {
            paths.push_back(line.substr(3, line.find('`', 3) - 3));
        }
    }
    return paths;
}

TEST_F(PlugInFixture, LooksUpWhatTheGuideListsIfNothingEndsIt) {
    leftOutOfDescription = "DETAIL";
    std::vector<BAS::Status> missing;
    factory.collectMissing(&missing);
    EXPECT_TRUE(start().isUsable());
    EXPECT_THAT(registry.log.entries(), IsEmpty());
    std::vector<std::string> paths;
    for (auto const& status : missing) {
        paths.push_back(status.arguments()[0].str());
    }
    EXPECT_EQ(paths.size(), boundFields.size() + boundBlocks.size());
    EXPECT_THAT(paths, testing::UnorderedElementsAreArray(fieldsOfTheGuide()));
}

TEST_F(PlugInFixture, LookUpsEndAtTheFirstThatFails) {
    leftOutOfDescription = "DETAIL.EVENT_TYPE";
    auto& started = start();
    EXPECT_THAT(registry.log.entries(),
                ElementsAre("ERR_EDR_FIELD_NOT_FOUND(5) [DETAIL.EVENT_TYPE] [EVENT_TYPE] "
                            "[FCT_DataDump] [DataDump]" +
                            at));
    EXPECT_TRUE(started.fields.idxServiceType.isValid());
    EXPECT_FALSE(started.fields.idxConnectSubType.isValid());
    EXPECT_FALSE(started.blocks.blkAssCbd.isValid());
    EDR::Container container(description);
    EXPECT_FALSE(started.itCbdCp.reset(&container));
}

TEST_F(PlugInFixture, IteratorThatCannotBeBoundNamesItsBlock) {
    auto& started = start();
    started.blocks.blkDlPd = EDR::Description::root();
    EXPECT_FALSE(started.bindIterators());
    EXPECT_THAT(registry.log.entries(), ElementsAre("ERR_INIT_EDR_ITERATOR(4) [DETAIL]" + at));
    EXPECT_THAT(registry.pipelineLog.entries(), IsEmpty());
}

TEST_F(PlugInFixture, ServiceFieldsAreThoseOfThePipelinesDescription) {
    sql += "INSERT INTO KWL_ALIAS_MAP VALUES('TEL', 'UniData_CustB', 'ALL', 2),"
           "                                ('SMS', 'Account_CustA', 'ALL', 2),"
           "                                ('XXX', 'account_custa', 'ALL', 1),"
           "                                ('TEL', 'Other', 'ALL', 3);";
    auto& started = start();
    ASSERT_TRUE(started.isUsable());
    std::map<std::string, std::pair<EDR::Index, EDR::Index>> fields;
    for (auto const& [code, entry] : started.serviceFieldMap) {
        EXPECT_EQ(entry->serviceCode(), *code);
        fields[code->str()] = {entry->aField(), entry->bField()};
    }
    EDR::Index const none;
    EDR::Index const a = description.findField("DETAIL.A_NUMBER");
    EDR::Index const b = description.findField("DETAIL.B_NUMBER");
    decltype(fields) const expected = {{"TEL", {a, b}}, {"SMS", {b, none}}, {"FAX", {none, b}}};
    EXPECT_EQ(fields, expected);
}

struct DatabaseCase {
    char const* title;
    char const* sql;
    std::string processLog;
    std::string pipelineLog;
};

class DatabaseErrors : public PlugInFixture, public testing::WithParamInterface<DatabaseCase> {};

TEST_P(DatabaseErrors, StopTheStart) {
    sql += GetParam().sql;
    EXPECT_FALSE(start().isUsable());
    auto const logged = [](support::LogRecorder const& log) {
        return log.entries().empty() ? "" : testing::PrintToString(log.entries());
    };
    EXPECT_THAT(logged(registry.log), testing::HasSubstr(GetParam().processLog));
    EXPECT_EQ(registry.log.entries().size(), GetParam().processLog.empty() ? 0U : 1U);
    EXPECT_THAT(logged(registry.pipelineLog), testing::HasSubstr(GetParam().pipelineLog));
    EXPECT_EQ(registry.pipelineLog.entries().size(), GetParam().pipelineLog.empty() ? 0U : 1U);
    EXPECT_FALSE(plugIn->status().messageName().isNull());
}

INSTANTIATE_TEST_SUITE_P(
    Cases, DatabaseErrors,
    testing::Values(
        DatabaseCase{"NoRowForThePipeline", "DELETE FROM KWL_PIPELINE WHERE PIPELINE = 'Main';",
                     "ERR_EMPTY_SERVICE_FIELD_MAP(4) [Main]" + at, ""},
        DatabaseCase{"FailsWhileRowsAreRead",
                     "ALTER TABLE KWL_EDRC_FIELD RENAME TO FIELDS;"
                     "CREATE VIEW KWL_EDRC_FIELD AS SELECT FIELD_ID, CASE FIELD_ID WHEN 2 THEN "
                     "abs(-9223372036854775807 - 1) ELSE FIELD_NAME END AS FIELD_NAME FROM FIELDS;",
                     "ERR_DATABASE(5) [", ""},
        DatabaseCase{"FieldThatTheDescriptionLacks",
                     "INSERT INTO KWL_ALIAS_MAP VALUES('ZZZ', 'Account_CustA', 'ALL', 3);", "",
                     "ERR_EDR_FIELD_NOT_FOUND(5) [DETAIL.NOWHERE] [] [FCT_DataDump] []" + at}),
    [](auto const& tested) { return tested.param.title; });

TEST_F(PlugInFixture, NameOutsideAnyPipelineHasNoServiceFields) {
    start();
    registry.add("Loose.Module.AccountDataModule", "CustomerData");
    Probe loose("host.Loose.Module");
    EXPECT_FALSE(loose.isUsable());
    auto const logged = registry.log.entries().size();
    EXPECT_FALSE(loose.initServiceFieldMap());
    EXPECT_EQ(registry.log.entries().size(), logged);
}

// An error is recorded with the status lock outermost and the name lock inside it.
TEST_F(PlugInFixture, StatusLockIsTakenOutsideTheNameLock) {
    using Object = BAS::RegisteredObject;
    start().blocks.blkDlPd = EDR::Description::root();
    std::unique_lock name(Object::nameLockerCM);
    auto failing = std::async(std::launch::async, [&] { return plugIn->bindIterators(); });
    // With the name lock held here, the other thread comes to wait for it with the status lock in
    // its hand. If it never takes that first, this waits for ever.
    while (Object::statusLockerCM.try_lock()) {
        Object::statusLockerCM.unlock();
        std::this_thread::yield();
    }
    EXPECT_THAT(registry.log.entries(), IsEmpty());
    name.unlock();
    EXPECT_FALSE(failing.get());
    EXPECT_EQ(registry.log.entries().size(), 1U);
}

} // namespace DataDumpTest
