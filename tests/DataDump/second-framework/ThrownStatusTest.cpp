// A status that a call of the start-up throws, each in turn, is reported and never leaves the
// constructor.
#include "DataDump/PlugInFixture.h"
#include "SecondFramework.h"

namespace DataDumpTest {

namespace {

struct Case {
    char const* title;
    std::map<std::string, std::string> keys;
    char const* leftOutOfDescription;
    char const* sql;
    bool starts;
};

class ThrownStatus : public PlugInFixture, public testing::WithParamInterface<Case> {
protected:
    // Starts with the calls throwing. False when there were too few calls to throw.
    bool startThrowing(std::size_t after, bool once) {
        plugIn.reset();
        second::throwStatus(after, once);
        EXPECT_NO_THROW(plugIn = std::make_unique<Probe>(plugInName));
        return second::stopThrowing();
    }
};

TEST_P(ThrownStatus, NeverLeavesTheConstructor) {
    keys.insert(GetParam().keys.begin(), GetParam().keys.end());
    leftOutOfDescription = GetParam().leftOutOfDescription;
    sql += GetParam().sql;
    BalanceModule const balance("host.DataPool.Balance.Module", calls);
    prepare();
    for (bool const once : {true, false}) {
        std::size_t logged = registry.pipelineLog.entries().size();
        std::size_t after = 0;
        for (; startThrowing(after, once) && !HasFailure(); ++after) {
            SCOPED_TRACE(after);
            ASSERT_FALSE(plugIn->isUsable());
            if (once && GetParam().starts) {
                EXPECT_EQ(plugIn->status().messageName(), "ERR_THROWN");
                EXPECT_EQ(plugIn->status().objectName(), plugInName);
                ASSERT_EQ(registry.pipelineLog.entries().size(), ++logged);
                EXPECT_EQ(registry.pipelineLog.entries().back(),
                          "ERR_THROWN(5) [by the framework] @" + plugInName);
            }
        }
        EXPECT_EQ(plugIn->isUsable(), GetParam().starts);
        EXPECT_GT(after, 5U);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Starts, ThrownStatus,
    testing::Values(
        Case{"Usable",
             {{"BalanceDataModule", "Balance"}, {"RatePlanType", "W,R"}, {"NumberOfEvents", "5"}},
             "",
             "",
             true},
        Case{"WrongModule", {{"BalanceDataModule", "CustomerData"}}, "", "", false},
        Case{"NoField", {}, "DETAIL.ITEM_TAG", "", false},
        Case{"NoTable", {}, "", "DROP TABLE KWL_ALIAS_MAP;", false},
        Case{"NoRow", {}, "", "DELETE FROM KWL_ALIAS_MAP;", false}),
    [](auto const& tested) { return tested.param.title; });

} // namespace

} // namespace DataDumpTest
