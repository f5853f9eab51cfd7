// In steady state an EDR allocates nothing: not for a repeated key, not for an eviction, not while
// the reports are as large as before. A program of its own, for it counts every allocation.
#include "PlugInFixture.h"
#include "support/AllocationCounter.h"

namespace DataDumpTest {

namespace {

constexpr std::size_t shapes = 16;

// Too long to lie inside a string object.
constexpr char const* longText = "a text that is too long for the storage within a string";

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
        auto const customer = "customer number " + std::to_string(i < shapes ? i : i / 2);
        support::fill(*edrs.back(), description, fullEdr(customer.c_str(), longText));
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
