// What no EDR by itself leads the capturing to: a service without its fields, an iterator without
// its block, and the offset on request.
#include "PlugInFixture.h"

#include <cstdlib>
#include <utility>

namespace DataDumpTest {

TEST_F(PlugInFixture, ServiceWithoutItsFieldsIsNotCaptured) {
    start();
    BAS::String const emptied("OFF");
    plugIn->serviceFieldMap[&emptied] = nullptr;
    process({{"INTERN_SERVICE_CODE", "OFF"}, {"A_NUMBER", "1"}});
    EXPECT_THAT(queued(), testing::IsEmpty());
}

TEST_F(PlugInFixture, IteratorThatCannotBePlacedEndsItsWalk) {
    start();
    struct {
        EDR::Iterator Probe::*iterator;
        std::size_t ownDiscounts;
        std::size_t owners;
        std::size_t priceModels;
    } const cases[] = {
        {&Probe::itDlPd, 0, 0, 2}, {&Probe::itSlSd, 1, 1, 2}, {&Probe::itCbdCp, 1, 2, 0}};
    for (auto const& each : cases) {
        auto const bound = std::exchange(*plugIn.*each.iterator, EDR::Iterator());
        process(fullEdr("1", "text"));
        *plugIn.*each.iterator = bound;
        auto const& record = *recordOf("1");
        EXPECT_EQ(record.accountInfo.ownDiscounts.entries(), each.ownDiscounts);
        EXPECT_EQ(record.sharingMap.entries(), each.owners);
        EXPECT_EQ(record.accountInfo.productInfo.priceModelCodes.entries(), each.priceModels);
    }
}

// What strtol makes of the text after the first underscore, whatever the number of digits and
// whatever surrounds them.
TEST(ObjectNumber, IsWhatFollowsTheFirstUnderscore) {
    using namespace std::string_literals;
    std::vector<std::string> tails = {"",     " ",  "-",    "+",      "+-1",
                                      "0x12", "_1", "12_3", "\0001"s, "12\0003"s};
    for (std::size_t digits = 1; digits <= 30; ++digits) {
        auto const number = std::string("9223372036854775807922337203685").substr(0, digits);
        for (auto const* before : {"", "-", "+", " \t\n\v\f\r", " -", "0"}) {
            for (auto const* after : {"", "x", " ", "/", ":", "\x80", "\xff"}) {
                tails.push_back(before + number + after);
            }
        }
    }
    for (auto const* head : {"", "1", "1234567", "12345678"}) {
        for (auto const& tail : tails) {
            auto const expected = std::strtol(tail.c_str(), nullptr, 10);
            EXPECT_EQ(FCT::DataDump::objectNumber(head + "_"s + tail),
                      static_cast<unsigned long>(expected))
                << head << "_" << tail;
        }
    }
    for (auto const* none : {"", "1", "12345678", "123456789", "_"}) {
        EXPECT_EQ(FCT::DataDump::objectNumber(none), 0U) << none;
    }
}

TEST_F(PlugInFixture, OffsetIsTakenOffATime) {
    struct {
        char const* offset;
        char const* time;
        long gmt; // seconds since 1970
    } const cases[] = {
        {"+0100", "19700101010000", 0},    {"-0330", "20260228120000", 1772292600},
        {"0200", "19700101030000", 3600},  {"+01:00", "19700101000100", 60},
        {"", "19700101000100", 60},        {"+9999999999999999999", "19700101000100", 60},
        {"+0100", "19691231230000", -3600}};
    start();
    for (auto const& each : cases) {
        EDR::Container container(description);
        support::fill(container, description, {{"UTC_TIME_OFFSET", each.offset}});
        auto time = BAS::DateTime::fromText(each.time);
        plugIn->applyUTCOffset(time, &container);
        EXPECT_EQ(static_cast<long>(time.seconds() - BAS::DateTime::rwToUnixSecsCM), each.gmt)
            << each.offset << " " << each.time;
    }
}

} // namespace DataDumpTest
