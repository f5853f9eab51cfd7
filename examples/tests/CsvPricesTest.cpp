#include "CsvPrices.h"

#include "ExampleHost.h"

#include <gtest/gtest.h>

#include <sstream>

namespace Example {

namespace {

std::string dump(CsvPrices& prices) {
    RWTValOrderedVector<BAS::String> codes;
    codes.append("PM_TEL");
    std::ostringstream out;
    prices.getDataDump(out, codes);
    return out.str();
}

TEST(CsvPrices, TakesNewPricesOverWhenItIsReloaded) {
    ExampleHost host;
    host.setDataModuleKey("File", "prices.csv");
    host.writeFile("prices.csv", "PM_TEL;0.09;60;second\nPM_TEL;0.05\n");
    CsvPrices prices(ExampleHost::dataModule);
    ASSERT_TRUE(prices.isUsable());
    EXPECT_EQ(dump(prices), "  price model PM_TEL: 0.09 per 60 second\n");
    EXPECT_EQ(prices.loadReport().rejected(), 1U);

    host.writeFile("prices.csv", "PM_SMS;0.10;1;message\n");
    DAT::LoadSession session;
    auto const read = prices.readNewData(session);
    EXPECT_EQ(dump(prices), "  price model PM_TEL: 0.09 per 60 second\n");
    read->takeOver();
    EXPECT_EQ(dump(prices), "  price model PM_TEL not in memory\n");
}

TEST(CsvPrices, ReturnsNoPartOfItsFile) {
    ExampleHost host;
    host.setDataModuleKey("File", "prices.csv");
    host.writeFile("prices.csv", "PM_TEL;0.09;60;second\n");
    CsvPrices prices(ExampleHost::dataModule);
    std::stop_source stop;
    stop.request_stop();
    DAT::LoadSession session(stop.get_token());
    EXPECT_THROW(prices.readNewData(session), BAS::Status);
}

TEST(CsvPrices, IsInvalidWithoutItsFile) {
    for (char const* const file : {"missing.csv", "."}) {
        ExampleHost host;
        host.setDataModuleKey("File", file);
        CsvPrices const prices(ExampleHost::dataModule);
        EXPECT_EQ(prices.status().messageName().str(), "ERR_FILE_NOT_READABLE") << file;
    }
}

} // namespace

} // namespace Example
