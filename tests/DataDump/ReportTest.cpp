// The text of the captured-event report.
#include "PlugInFixture.h"

namespace DataDumpTest {

using testing::ElementsAre;

namespace {

std::string const separator(70, '-');

// Fills every field that the report shows.
void fillRecord(FCT::DataDump::EventDetailRecord& record) {
    record.serviceId = 18446744073709551615U;
    record.serviceType = "/service/telco";
    record.eventType = "/event/session/telco";
    record.chargingStartTime = 1795249800;
    record.accountInfo.accountId = 1001;
    record.accountInfo.balanceGroupId = 2001;
    record.accountInfo.productInfo.name = "VOICE_STD";
    record.accountInfo.productInfo.priceModelCodes = {"PM1", "PM2"};
    addDiscount(record, 11, "D1");
    addDiscount(record, 12, "D2");
    addOwner(record, 107, 7, "/group/sharing", 207,
             {{5, "S1", FCT::DataDump::SharingTypeDiscount},
              {9, "S2", FCT::DataDump::SharingTypeSponsor}});
    addOwner(record, 103, 3, "/group/sharing", 203, {});
}

} // namespace

TEST_F(PlugInFixture, ReportOfNothingIsEmpty) {
    start();
    plugIn->dumpCounter = 5;
    EXPECT_EQ(report(), "");
    EXPECT_EQ(plugIn->dumpCounter, 0);
}

TEST_F(PlugInFixture, ReportShowsEveryPartOfARecord) {
    start();
    processCustomer("491711234567");
    fillRecord(*recordOf("491711234567"));
    EXPECT_EQ(report(), separator + R"(
Event type= Identifier=491711234567   Service Code = TEL
Event Service Id         = 18446744073709551615
Event Service Type       = /service/telco
Event Event Type         = /event/session/telco
Charging Start Time Stamp= 1795249800
Event Account id         = 1001
Event Balance Group id   = 2001


  Used Rating product info:
    Used Rate Plan code   : VOICE_STD
    Used Price model codes: PM1   PM2   


  Event's own Discount:
    Discount Object id    : 11
    Discount model name   : D1
    Discount Object id    : 12
    Discount model name   : D2


  DiscountSharing & Sponsorship:

    Sharing owner info:

    Account id : 103

    Owner id   : 3

    Owner Type : /group/sharing

    BalGrp id  : 203

    Sharing owner info:

    Account id : 107

    Owner id   : 7

    Owner Type : /group/sharing

    BalGrp id  : 207
     Discount/Sponsorship Object id    : 5
     Discount/Sponsorship model name   : S1
     Discount/Sponsorship Object id    : 9
     Discount/Sponsorship model name   : S2
)" + separator + "\n");
    EXPECT_EQ(plugIn->dumpCounter, 0);
}

TEST_F(PlugInFixture, EmptyRecordWritesItsHeadings) {
    start();
    processCustomer("1");
    EXPECT_EQ(report(), separator +
                            "\nEvent type= Identifier=1   Service Code = TEL\n"
                            "Event Service Id         = 0\n"
                            "Event Service Type       = \n"
                            "Event Event Type         = \n"
                            "Charging Start Time Stamp= 0\n"
                            "Event Account id         = 0\n"
                            "Event Balance Group id   = 0\n"
                            "\n\n  Used Rating product info:\n"
                            "    Used Rate Plan code   : \n"
                            "    Used Price model codes: \n"
                            "\n\n  Event's own Discount:\n"
                            "\n\n  DiscountSharing & Sponsorship:\n" +
                            separator + "\n");
}

TEST_F(PlugInFixture, ReportGoesFromTheOldestAndStopsAtAnEmptyEntry) {
    start();
    auto const lines = [&](std::string const& key) {
        return separator + "\nEvent type= Identifier=" + key + "   Service Code = TEL\n" +
               separator + "\n";
    };
    putKey("B");
    auto& newer = putKey("A");
    EXPECT_EQ(report(), lines("B") + lines("A"));

    plugIn->eventQueue.pushFront(nullptr);
    plugIn->eventQueue.moveToFront(newer);
    EXPECT_EQ(report(), lines("B"));
    EXPECT_EQ(plugIn->dumpCounter, 1);
}

TEST_F(PlugInFixture, EveryLineIsFlushed) {
    start();
    processCustomer("1");
    fillRecord(*recordOf("1"));
    FlushRecorder buffer;
    std::ostream out(&buffer);
    plugIn->dumpAllEvents(out);
    // A literal may bring line ends of its own in front; every flush comes right behind one.
    EXPECT_EQ(buffer.flushed.size(), 32U);
    EXPECT_EQ(buffer.flushed.front(), separator + "\n");
    EXPECT_EQ(buffer.flushed.back(), buffer.str());
    for (auto const& text : buffer.flushed) {
        EXPECT_TRUE(text.ends_with('\n'));
    }
}

} // namespace DataDumpTest
