// Commands at run time: which one is executed, what it answers and what it leaves behind.
#include "PlugInFixture.h"

namespace DataDumpTest {

using testing::ElementsAre;

struct CommandCase {
    char const* title;
    std::vector<std::pair<std::string, std::string>> command;
    bool handled;
    bool workDone;
    std::vector<std::string> log;
    bool keepsEvents;
};

class Commands : public PlugInFixture, public testing::WithParamInterface<CommandCase> {};

TEST_P(Commands, AnswerAndAct) {
    start();
    processCustomer("K1");
    BAS::ProtectedBool workDone;
    EXPECT_EQ(update(GetParam().command, workDone), GetParam().handled);
    EXPECT_EQ(workDone.value(), GetParam().workDone);
    EXPECT_EQ(registry.log.entries(), GetParam().log);
    EXPECT_EQ(queued().size(), GetParam().keepsEvents ? 1U : 0U);
    EXPECT_EQ(plugIn->eventMap.entries(), queued().size());
    EXPECT_EQ(plugIn->numberOfEvents, 10U);
    workDone.set(true);
    update(GetParam().command, workDone);
    EXPECT_TRUE(workDone.value());
}

std::string const noFile =
    "ERR_REG_VALUE_INVALID(5) [] [Event file name not specified.] @" + plugInName;

INSTANTIATE_TEST_SUITE_P(
    Cases, Commands,
    testing::Values(
        CommandCase{"ClearData", {{"ClearData", ""}}, true, true, {}, false},
        CommandCase{"NoFile", {{"DumpEvents", ""}}, false, true, {noFile}, true},
        CommandCase{"NoDumpFile", {{"Dump", ""}, {"ClearData", ""}}, false, true, {noFile}, true},
        CommandCase{"NoKey", {}, true, true, {}, true}),
    [](auto const& tested) { return tested.param.title; });

TEST_F(PlugInFixture, UpdateWithoutEntryOrSubtreeIsRejected) {
    start();
    BAS::ProtectedBool workDone;
    EXPECT_FALSE(plugIn->registryUpdate(nullptr, workDone));
    Probe loose("host.Pipelines.Main.Functions.Loose.Module");
    BAS::RegistryEntry const clear("update");
    EXPECT_FALSE(loose.registryUpdate(&clear, workDone));
    EXPECT_FALSE(workDone.value());
    EXPECT_THAT(registry.log.entries(),
                ElementsAre("ERR_REG_UPDATE_FAILED(5) [" + plugInName + "] @" + plugInName,
                            testing::StartsWith("ERR_REG_SUBTREE_NOT_FOUND(5)"),
                            testing::StartsWith("ERR_REG_UPDATE_FAILED(5) [host.Pipelines.Main."
                                                "Functions.Loose.Module]")));
}

// A module that fails in the middle of a dump doesn't take the plug-in with it.
TEST_F(PlugInFixture, ExceptionOfAModuleEndsTheDumpAndNothingElse) {
    struct Failing : BalanceModule {
        using BalanceModule::BalanceModule;
        void getDataDump(std::ostream&, RWTValOrderedVector<unsigned long> const&) const override {
            throw std::runtime_error("balance");
        }
    } failing("Failing.Module", calls);
    start();
    plugIn->balanceDataModule = &failing;
    processCustomer("K1");
    BAS::ProtectedBool workDone;
    auto const file = (directory.path() / "out").string();
    EXPECT_THROW(update({{"Dump", file}}, workDone), std::runtime_error);
    EXPECT_THAT(directory.read("out"), testing::EndsWith("Balance Information:0\n"));
    plugIn->balanceDataModule = nullptr;
    EXPECT_TRUE(update({{"Dump", file}}, workDone));
    EXPECT_THAT(directory.read("out"), testing::EndsWith("\n\n\n"));
}

} // namespace DataDumpTest
