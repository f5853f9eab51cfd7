// What neither report shows in its text: where it ends in a queue with an empty entry, and that
// each line is on its way before the next is written.
#include "PlugInFixture.h"

namespace DataDumpTest {

namespace {

// Keeps what had arrived at each flush.
class FlushRecorder : public std::stringbuf {
public:
    std::vector<std::string> flushed;

protected:
    int sync() override {
        flushed.push_back(str());
        return 0;
    }
};

std::string const separator(70, '-');

struct Report {
    void (Probe::*write)(std::ostream&);
    std::string firstLine;
    std::size_t lines; // of one full EDR; a literal may bring line ends of its own in front
};
Report const reports[] = {{&Probe::dumpAllEvents, separator + "\n", 30},
                          {&Probe::dumpAllInMemoryData, "Begin: 1\n", 43}};

} // namespace

TEST_F(PlugInFixture, ReportsGoFromTheOldestAndStopAtAnEmptyEntry) {
    start();
    putKey("B");
    plugIn->eventQueue.push_front(nullptr);
    putKey("A");
    for (auto const& report : reports) {
        std::ostringstream out;
        (*plugIn.*report.write)(out);
        EXPECT_THAT(out.str(), testing::StartsWith(report.firstLine));
        EXPECT_THAT(out.str(), testing::HasSubstr("B   Service Code = TEL\n"));
        EXPECT_THAT(out.str(), testing::Not(testing::HasSubstr("A   Service Code = TEL\n")));
        EXPECT_EQ(plugIn->dumpCounter, 1);
    }
}

TEST_F(PlugInFixture, DumpWithoutAnAccountModuleKeepsTheHeading) {
    start();
    processCustomer("1");
    plugIn->accountDataModule = nullptr;
    std::ostringstream out;
    plugIn->dumpAllInMemoryData(out);
    EXPECT_THAT(out.str(),
                testing::HasSubstr("Account Info:\n--------------------\n\nUsed Rating"));
    EXPECT_THAT(calls.list(), testing::IsEmpty());
}

TEST_F(PlugInFixture, EveryLineIsFlushed) {
    BalanceModule balance("host.DataPool.Balance.Module", calls);
    DiscountModule discount("host.DataPool.Discount.Module", calls);
    keys["BalanceDataModule"] = "Balance";
    keys["DiscountDataModule"] = "Discount";
    start();
    process(fullEdr("1", "text"));
    for (auto const& report : reports) {
        FlushRecorder buffer;
        std::ostream out(&buffer);
        (*plugIn.*report.write)(out);
        ASSERT_EQ(buffer.flushed.size(), report.lines);
        EXPECT_EQ(buffer.flushed.front(), report.firstLine);
        EXPECT_EQ(buffer.flushed.back(), buffer.str());
        for (auto const& text : buffer.flushed) {
            EXPECT_TRUE(text.ends_with('\n'));
        }
    }
}

} // namespace DataDumpTest
