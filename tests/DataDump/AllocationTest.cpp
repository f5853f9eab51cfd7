// In steady state an EDR allocates nothing: not for a repeated key, not for an eviction, not while
// the reports are as large as before. A program of its own, for it counts every allocation.
#include "PlugInFixture.h"
#include "support/AllocationCounter.h"

namespace DataDumpTest {

namespace {

constexpr std::size_t shapes = 16;

// Texts too long to lie inside a string object, and lists of every kind.
std::vector<support::EdrStep> const longTexts = {
    {"INTERN_SERVICE_CODE", "TEL"},
    {"EVENT_TYPE", "/event/session/telco/with/a/long/name"},
    {"CUST_A"},
    {"CUST_A.ACCOUNT_PARENT_ID", "1_1001"},
    {"CUST_A.PRODUCT"},
    {"CUST_A.PRODUCT.SERVICE_TYPE", "/service/telco/with/a/long/name"},
    {"CUST_A.DL"},
    {"CUST_A.DL.DISCOUNT_OWNER_ACCT_ID", "1_1001"},
    {"CUST_A.DL.PD"},
    {"CUST_A.DL.PD.DISCOUNT_MODEL", "a discount model with a long name"},
    {"CUST_A.DL"},
    {"CUST_A.DL.DISCOUNT_OWNER_ACCT_ID", "1_1002"},
    {"CUST_A.DL.DISCOUNT_OWNER_ID", "1_4002"},
    {"CUST_A.DL.DISCOUNT_OWNER_TYPE", "/group/sharing/with/a/long/name"},
    {"CUST_A.DL.PD"},
    {"CUST_A.DL.PD.DISCOUNT_MODEL", "a shared discount model with a long name"},
    {"CUST_A.SL"},
    {"CUST_A.SL.SPONSOR_OWNER_ACCT_ID", "1_1003"},
    {"CUST_A.SL.SPONSOR_OWNER_ID", "1_4001"},
    {"CUST_A.SL.SPONSOR_OWNER_TYPE", "/group/sponsor/with/a/long/name"},
    {"CUST_A.SL.SD"},
    {"CUST_A.SL.SD.DISCOUNT_MODEL", "a sponsorship model with a long name"},
    {"ASS_CBD"},
    {"ASS_CBD.RECORD_TYPE", "981"},
    {"ASS_CBD.CP"},
    {"ASS_CBD.CP.RATEPLAN_TYPE", "R"},
    {"ASS_CBD.CP.RATEPLAN_CODE", "A_RATE_PLAN_WITH_A_LONG_NAME"},
    {"ASS_CBD.CP.PRICEMODEL_CODE", "A_PRICE_MODEL_WITH_A_LONG_NAME"},
    {"ASS_CBD.CP"},
    {"ASS_CBD.CP.RATEPLAN_TYPE", "R"},
    {"ASS_CBD.CP.PRICEMODEL_CODE", "ANOTHER_PRICE_MODEL_WITH_A_LONG_NAME"}};

} // namespace

TEST_F(PlugInFixture, SteadyStateAllocatesNothing) {
    keys["NumberOfEvents"] = "8";
    start();
    std::vector<std::unique_ptr<EDR::Container>> edrs;
    RWTPtrOrderedVector<EDR::Container> batch;
    // Twice as many keys as there is room for, each once: every EDR evicts. Then one key twice in
    // a row: every second EDR is a repeat.
    for (std::size_t i = 0; i < shapes * 2; ++i) {
        edrs.push_back(std::make_unique<EDR::Container>(description));
        support::fill(*edrs.back(), description, longTexts);
        auto const customer = "customer number " + std::to_string(i < shapes ? i : i / 2);
        edrs.back()->setField(description.findField("DETAIL.A_NUMBER"), customer);
        batch.append(edrs.back().get());
    }
    plugIn->processEdrContainer(batch);
    auto const before = support::allocationCount();
    for (int i = 0; i < 10; ++i) {
        plugIn->processEdrContainer(batch);
    }
    EXPECT_EQ(support::allocationCount() - before, 0U);
    EXPECT_EQ(queued().size(), 8U);
    EXPECT_EQ(recordOf("customer number 15")->sharingMap.entries(), 2U);
}

} // namespace DataDumpTest
