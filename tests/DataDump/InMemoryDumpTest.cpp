// The text of the in-memory data dump, and what the data modules are asked for it.
#include "PlugInFixture.h"

namespace DataDumpTest {

using testing::ElementsAre;

class InMemoryDump : public PlugInFixture {
protected:
    // One event with two equal discounts of its own and two owners, of which one has nothing.
    void startWithOneEvent() {
        start();
        processCustomer("49171");
        auto& record = *recordOf("49171");
        record.serviceId = 3001;
        record.serviceType = "/service/telco";
        record.eventType = "/event/telco";
        record.chargingStartTime = 60;
        record.accountInfo.accountId = 1;
        record.accountInfo.balanceGroupId = 100;
        auto& product = record.accountInfo.productInfo;
        product.name = "VOICE";
        product.internalRatePlan = "12";
        product.ratePlanVersion = -3;
        product.impactCategory = "DOMESTIC";
        product.serviceCodeUsed = "TEL";
        product.serviceClassUsed = "*";
        product.priceModelCodes = {"PM1", "PM2", "PM1"};
        addDiscount(record, 11, "D1");
        addDiscount(record, 11, "D1");
        addOwner(record, 2, 20, "/group", 200,
                 {{5, "S5", FCT::DataDump::SharingTypeDiscount},
                  {9, "S9", FCT::DataDump::SharingTypeSponsor},
                  {8, "S8", "DiscountSharin"}});
        addOwner(record, 2, 30, "/group", 300, {});
    }
    void configureAllModules() {
        plugIn->balanceDataModule = &balance;
        plugIn->discountDataModule = &discount;
        plugIn->rateplanDataModule = &rateplan;
        plugIn->priceDataModule = &price;
    }
    std::string dump() {
        std::ostringstream out;
        // The fill of each module's first value is set anew.
        out.fill('#');
        plugIn->dumpAllInMemoryData(out);
        return out.str();
    }

    BalanceModule balance{"Balance.Module", calls};
    DiscountModule discount{"Discount.Module", calls};
    RateplanModule rateplan{"Rateplan.Module", calls};
    PriceModule price{"Price.Module", calls};
};

namespace {

std::string const heading = R"(
======================================================================
Event type: Identifier= 49171   Service Code = TEL
)";
std::string const eventRows = R"(Event Service Id         = 3001
Event Service Type       = /service/telco
Event Event Type         = /event/telco
Charging Start Time Stamp= 60
Event Account id         = 1
Event Balance Group id   = 100
)";
std::string const accountHeading = "\nEvent Account Info:\n--------------------\n";
std::string const productHeading =
    "\nUsed Rating product Info:\n-------------------------\n"
    "Used Rate Plan code: VOICE , Intern RatePlan Id: 12 , Intern RatePlan Version: -3 , "
    "Impact Catagory: DOMESTIC\n";
std::string const priceHeading =
    "Used Price model codes: PM1   PM2   PM1   \n----------------------- \n";
std::string const ownDiscounts = R"(

Event's own Discount:
---------------------
    Discount Object id    : 11
    Discount model name   : D1

    Discount Object id    : 11
    Discount model name   : D1

)";
std::string const sharingHeading = "\n\nAll DiscountSharing & Sponsorship Information:\n"
                                   "--------------------------------------------------\n";

std::string ownerRows(std::string const& ownerId, std::string const& balanceGroupId) {
    return "\n    Sharing owner info:\n\n    Account id : 2\n\n    Owner id   : " + ownerId +
           "\n\n    Owner Type : /group\n\n    BalGrp id  : " + balanceGroupId + "\n";
}
std::string const itemRows = R"(     Discount/Sponsorship Object id    : 5
     Discount/Sponsorship model name   : S5
     Discount/Sponsorship Object id    : 9
     Discount/Sponsorship model name   : S9
     Discount/Sponsorship Object id    : 8
     Discount/Sponsorship model name   : S8
)";

} // namespace

TEST_F(InMemoryDump, AsksEveryModuleAndFramesWhatItWrites) {
    startWithOneEvent();
    configureAllModules();
    auto const ownerBalance = "\n\nSharing owner Balance Information:100\n 7";
    auto const expected = "Begin: 1" + heading + eventRows + accountHeading + " 7\n" +
                          productHeading + " 7\n" + priceHeading + " 7\n" +
                          "\n\nEvent's owner Balance Information:100\n 7" + ownDiscounts + " 7 7" +
                          sharingHeading + ownerRows("20", "200") + ownerBalance + itemRows +
                          " 7 7 7" + ownerRows("30", "300") + ownerBalance + " 7 7 7\n\n";
    EXPECT_EQ(dump(), expected);
    EXPECT_THAT(calls.list(),
                ElementsAre("account(49171,3001,/service/telco,/event/telco) w2' '",
                            "rateplan(VOICE,-3,TEL,*,DOMESTIC) w2' '", "price{PM1,PM2,PM1} w2' '",
                            "balance{100} w2' '", "discounts{11,11} w2' '", "models{D1,D1} w2' '",
                            "balance{200} w2' '", "discounts{5} w2' '", "sponsorships{9,8} w2' '",
                            "models{S5,S9,S8} w2' '", "balance{300} w2' '", "discounts{} w2' '",
                            "sponsorships{} w2' '", "models{} w2' '"));
    // A second dump numbers its events anew.
    EXPECT_EQ(dump(), expected);
}

TEST_F(InMemoryDump, TakesNothingFromOneEventToTheNext) {
    startWithOneEvent();
    processCustomer("49172");
    plugIn->balanceDataModule = &balance;
    plugIn->discountDataModule = &discount;
    addOwner(*recordOf("49171"), 2, 30, "/group", 300,
             {{6, "S6", "Sponsorship"}, {4, "S4", FCT::DataDump::SharingTypeDiscount}});
    dump();
    ASSERT_GT(calls.list().size(), 4U);
    EXPECT_THAT(std::vector(calls.list().end() - 4, calls.list().end()),
                ElementsAre("account(49172,0,,) w2' '", "balance{0} w2' '", "discounts{} w2' '",
                            "models{} w2' '"));
}

TEST_F(InMemoryDump, LeavesOutWhatAMissingModuleWouldShow) {
    startWithOneEvent();
    plugIn->accountDataModule = nullptr;
    EXPECT_EQ(dump(), "Begin: 1" + heading + eventRows + accountHeading + productHeading +
                          priceHeading + sharingHeading + ownerRows("20", "200") + itemRows +
                          ownerRows("30", "300") + "\n\n");
    EXPECT_THAT(calls.list(), testing::IsEmpty());
    // The calls for balances and discounts bring their headings, each without the other.
    plugIn->balanceDataModule = &balance;
    EXPECT_THAT(dump(), testing::AllOf(testing::HasSubstr("Event's owner Balance Information:100"),
                                       testing::Not(testing::HasSubstr("Event's own Discount"))));
    plugIn->balanceDataModule = nullptr;
    plugIn->discountDataModule = &discount;
    EXPECT_THAT(dump(), testing::AllOf(testing::HasSubstr(ownDiscounts),
                                       testing::Not(testing::HasSubstr("Balance Information"))));
}

TEST_F(InMemoryDump, GoesFromTheOldestAndStopsAtAnEmptyEntry) {
    start();
    putKey("49171");
    EXPECT_EQ(dump(), "Begin: 1" + heading + "\n\n");
    auto& newest = putKey("1");
    EXPECT_THAT(dump(), testing::AllOf(testing::StartsWith("Begin: 1" + heading + "\n\nBegin: 2\n"),
                                       testing::EndsWith("= 1   Service Code = TEL\n\n\n")));
    plugIn->eventQueue.pushFront(nullptr);
    plugIn->eventQueue.moveToFront(newest);
    EXPECT_EQ(dump(), "Begin: 1" + heading + "\n\n");
    EXPECT_EQ(plugIn->dumpCounter, 1);
}

TEST_F(InMemoryDump, EveryLineIsFlushed) {
    startWithOneEvent();
    configureAllModules();
    FlushRecorder buffer;
    std::ostream out(&buffer);
    plugIn->dumpAllInMemoryData(out);
    EXPECT_EQ(buffer.flushed.size(), 50U);
    EXPECT_EQ(buffer.flushed.front(), "Begin: 1\n");
    EXPECT_EQ(buffer.flushed.back(), buffer.str());
    for (auto const& text : buffer.flushed) {
        EXPECT_TRUE(text.ends_with('\n'));
    }
}

} // namespace DataDumpTest
