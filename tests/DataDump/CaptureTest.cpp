// What one EDR leaves in its record.
#include "PlugInFixture.h"

#include <climits>

namespace DataDumpTest {

using support::EdrStep;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::vector<EdrStep> operator+(std::vector<EdrStep> head, std::vector<EdrStep> const& tail) {
    head.insert(head.end(), tail.begin(), tail.end());
    return head;
}

std::vector<EdrStep> const head = {{"INTERN_SERVICE_CODE", "TEL"}, {"A_NUMBER", "49171"}};
// Without its closing parts: blocks below CUST_A may follow.
std::vector<EdrStep> const ownAccount = {{"CUST_A"}, {"CUST_A.ACCOUNT_PARENT_ID", "1_1001"}};

std::vector<EdrStep> packet(char const* ratePlanType, char const* plan, char const* priceModel,
                            char const* priceModelType = "P") {
    return {{"ASS_CBD.CP"},
            {"ASS_CBD.CP.RATEPLAN_TYPE", ratePlanType},
            {"ASS_CBD.CP.RATEPLAN_CODE", plan},
            {"ASS_CBD.CP.INTERN_RATEPLAN", "12"},
            {"ASS_CBD.CP.INTERN_RATEPLAN_VERSION", "3"},
            {"ASS_CBD.CP.IMPACT_CATEGORY", "DOMESTIC"},
            {"ASS_CBD.CP.SERVICE_CODE_USED", "TEL"},
            {"ASS_CBD.CP.SERVICE_CLASS_USED", "*"},
            {"ASS_CBD.CP.PRICEMODEL_CODE", priceModel},
            {"ASS_CBD.CP.PRICEMODEL_TYPE", priceModelType}};
}
std::vector<EdrStep> breakdown(char const* recordType) {
    return {{"ASS_CBD"}, {"ASS_CBD.RECORD_TYPE", recordType}};
}
std::vector<EdrStep> discountOwner(char const* account, char const* owner, char const* type,
                                   char const* balanceGroup) {
    return {{"CUST_A.DL"},
            {"CUST_A.DL.DISCOUNT_OWNER_ACCT_ID", account},
            {"CUST_A.DL.DISCOUNT_OWNER_ID", owner},
            {"CUST_A.DL.DISCOUNT_OWNER_TYPE", type},
            {"CUST_A.DL.BALANCE_GROUP_ID", balanceGroup}};
}
std::vector<EdrStep> discount(char const* id, char const* model) {
    return {
        {"CUST_A.DL.PD"}, {"CUST_A.DL.PD.DISCOUNT_ID", id}, {"CUST_A.DL.PD.DISCOUNT_MODEL", model}};
}
std::vector<EdrStep> sponsor(char const* account, char const* owner, char const* type,
                             char const* balanceGroup) {
    return {{"CUST_A.SL"},
            {"CUST_A.SL.SPONSOR_OWNER_ACCT_ID", account},
            {"CUST_A.SL.SPONSOR_OWNER_ID", owner},
            {"CUST_A.SL.SPONSOR_OWNER_TYPE", type},
            {"CUST_A.SL.BALANCE_GROUP_ID", balanceGroup}};
}
std::vector<EdrStep> sponsorship(char const* id, char const* model) {
    return {{"CUST_A.SL.SD"},
            {"CUST_A.SL.SD.SPONSORSHIP_ID", id},
            {"CUST_A.SL.SD.DISCOUNT_MODEL", model}};
}

template <class Items>
std::string itemsText(Items const& items) {
    std::string text;
    for (std::size_t i = 0; i < items.entries(); ++i) {
        auto const& item = items[i];
        text += std::to_string(item.objectId) + ":" + item.name.str();
        if constexpr (requires { item.sharingType; }) {
            text += ":" + item.sharingType.str();
        }
        text += " ";
    }
    return text;
}
std::vector<std::string> sharingText(FCT::DataDump::EventDetailRecord const& record) {
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < record.sharingMap.entries(); ++i) {
        auto const& [owner, items] = record.sharingMap[i];
        texts.push_back(std::to_string(owner.ownerId) + "/" + std::to_string(owner.accountId) +
                        "/" + std::to_string(owner.balanceGroupId) + "/" + owner.ownerType.str() +
                        " " + itemsText(items));
    }
    return texts;
}

} // namespace

TEST_F(PlugInFixture, RecordHoldsTheEventOfTheProductThatRatingSelected) {
    start();
    process(head + std::vector<EdrStep>{{"EVENT_TYPE", "/event/session/telco"},
                                        {"SERVICE_TYPE", "/not/kept"},
                                        {"INTERN_BALANCE_GROUP_ID", "1_2001"},
                                        {"UTC_TIME_OFFSET", "+0100"},
                                        {"CHARGING_START_TIMESTAMP", "20261121093000"},
                                        {"CUST_A"},
                                        {"CUST_A.INTERN_FOUND_PP_INDEX", "1"},
                                        {"CUST_A.ACCOUNT_PARENT_ID", "1_1001"},
                                        {"CUST_A.PRODUCT"},
                                        {"CUST_A.PRODUCT.SERVICE_TYPE", "/service/first"},
                                        {"CUST_A.PRODUCT.SERVICE_ID", "1_3000"},
                                        {"CUST_A.PRODUCT"},
                                        {"CUST_A.PRODUCT.SERVICE_TYPE", "/service/telco"},
                                        {"CUST_A.PRODUCT.SERVICE_ID", "1_3001"}});
    auto const* const record = recordOf("49171");
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->identifier, "49171");
    EXPECT_EQ(record->serviceCode, "TEL");
    EXPECT_EQ(record->eventType, "/event/session/telco");
    EXPECT_EQ(record->serviceType, "/service/telco");
    EXPECT_EQ(record->serviceId, 3001U);
    EXPECT_EQ(record->accountInfo.accountId, 1001U);
    EXPECT_EQ(record->accountInfo.balanceGroupId, 2001U);
    EXPECT_EQ(record->chargingStartTime, 1795249800U); // 2026-11-21 08:30:00 GMT
    EXPECT_EQ(plugIn->currentObjects, (RWTValOrderedVector<long>{0, 1}));
}

TEST_F(PlugInFixture, OnlyDetailsOfKnownServicesAreCaptured) {
    start();
    process(head, EDR::headerRecord);
    process(head, EDR::trailerRecord);
    process({{"INTERN_SERVICE_CODE", "NET"}, {"A_NUMBER", "1"}}); // of another description
    process({{"INTERN_SERVICE_CODE", "FAX"}, {"A_NUMBER", "1"}}); // has a B field only
    process({{"INTERN_SERVICE_CODE", "tel"}, {"A_NUMBER", "1"}});
    process({});
    BAS::String const emptied("OFF");
    plugIn->serviceFieldMap[&emptied] = nullptr;
    process({{"INTERN_SERVICE_CODE", "OFF"}, {"A_NUMBER", "1"}});
    EXPECT_THAT(queued(), IsEmpty());
    process({{"INTERN_SERVICE_CODE", "SMS"}, {"A_NUMBER", "1"}, {"B_NUMBER", "2"}});
    EXPECT_THAT(queued(), ElementsAre("2"));
}

TEST_F(PlugInFixture, ObjectNumberFollowsTheFirstUnderscore) {
    struct Case {
        char const* identifier;
        unsigned long number;
    };
    Case const cases[] = {{"1_2001", 2001},
                          {"0.0.0.1_2001_3", 2001},
                          {"2001", 0},
                          {"", 0},
                          {"_", 0},
                          {"1_", 0},
                          {"1_x5", 0},
                          {"1_\x01"
                           "5",
                           0},
                          {"1__5", 0},
                          {"_7", 7},
                          {"1_ \t\n\v\f\r12 3", 12},
                          {"1_+5", 5},
                          {"1_+-5", 0},
                          {"1_-+5", 0},
                          {"1_-5", static_cast<unsigned long>(-5)},
                          {"1_0005abc", 5},
                          {"1_9223372036854775807", LONG_MAX},
                          {"1_9223372036854775808", LONG_MAX},
                          {"1_-99999999999999999999", static_cast<unsigned long>(LONG_MIN)}};
    start();
    for (auto const& c : cases) {
        process(head + std::vector<EdrStep>{{"INTERN_BALANCE_GROUP_ID", c.identifier}});
        EXPECT_EQ(recordOf("49171")->accountInfo.balanceGroupId, c.number) << c.identifier;
    }
}

TEST_F(PlugInFixture, ChargingStartIsBroughtToGmt) {
    struct Case {
        char const* offset;
        char const* chargingStart;
        long expected;
    };
    Case const cases[] = {{"+0100", "19700101010000", 0},
                          {"-0030", "19700101000000", 1800},
                          {"+0530", "19700101060000", 1800},
                          {"-0800", "19700101000000", 28800},
                          {"-0330", "20260228120000", 1772292600},
                          {"0200", "19700101030000", 3600},
                          {"", "19700101000100", 60},
                          {"+01:00", "19700101000100", 60},
                          {"+9999999999999999999", "19700101000100", 60},
                          {"+0100", "19691231230000", -3600},
                          {"+0000", "18991231235959", 0},
                          {"+0100", "2026-11-21", -3600},
                          {"+0100", "20260229000000", -3600},
                          {"+0000", "20240229000001", 1709164801},
                          {"+0000", "20260101240000", 0}};
    start();
    for (auto const& c : cases) {
        process(head + std::vector<EdrStep>{{"UTC_TIME_OFFSET", c.offset},
                                            {"CHARGING_START_TIMESTAMP", c.chargingStart}});
        EXPECT_EQ(static_cast<long>(recordOf("49171")->chargingStartTime), c.expected)
            << c.offset << " " << c.chargingStart;

        EDR::Container container(description);
        support::fill(container, description, {{"UTC_TIME_OFFSET", c.offset}});
        auto dateTime = BAS::DateTime::fromText(c.chargingStart);
        plugIn->applyUTCOffset(dateTime, &container);
        EXPECT_EQ(static_cast<long>(dateTime.seconds() - BAS::DateTime::rwToUnixSecsCM), c.expected)
            << c.offset << " " << c.chargingStart;
    }
}

TEST_F(PlugInFixture, MatchingChargePacketsGiveTheProduct) {
    keys["ChargeBreakDownRecordType"] = "982";
    keys["RatePlanType"] = "W";
    start();
    process(head + breakdown("980") + packet("R", "OTHER", "PM_OTHER") + breakdown("982") +
            packet("R", "FIRST", "PM1", "P") + packet("X", "LEFT_OUT", "PM_LEFT_OUT") +
            breakdown("981") + packet("W", "SECOND", "PM2", "neither") +
            packet("R", "LAST", "PM1"));
    auto const& product = recordOf("49171")->accountInfo.productInfo;
    EXPECT_EQ(product.name, "LAST");
    EXPECT_EQ(product.internalRatePlan, "12");
    EXPECT_EQ(product.ratePlanVersion, 3);
    EXPECT_EQ(product.impactCategory, "DOMESTIC");
    EXPECT_EQ(product.serviceCodeUsed, "TEL");
    EXPECT_EQ(product.serviceClassUsed, "*");
    EXPECT_THAT(texts(product.priceModelCodes), ElementsAre("PM1", "PM2", "PM1"));

    // Nothing matches: the lists are those of this EDR, the plan stays the earlier one's.
    process(head + breakdown("980") + packet("R", "OTHER", "PM_OTHER"));
    EXPECT_EQ(product.name, "LAST");
    EXPECT_EQ(product.ratePlanVersion, 3);
    EXPECT_EQ(product.priceModelCodes.entries(), 0U);
}

TEST_F(PlugInFixture, OwnersAreTheAccountItselfOrSharingAccounts) {
    start();
    process(head + ownAccount + discountOwner("1_1009", "1_4007", "/group/sharing", "1_2009") +
            discount("1_5001", "FAMILY10") + discount("1_5002", "FAMILY20") +
            discountOwner("1_1001", "1_4001", "/account", "1_2001") + discount("1_5003", "OWN5") +
            discountOwner("1_1003", "1_4003", "/group/sharing", "1_2003") +
            discountOwner("1_9999", "1_4007", "/late", "1_2999") + discount("1_5001", "FAMILY10") +
            sponsor("1_1001", "1_4001", "/account", "1_2001") + sponsorship("1_6000", "SELF") +
            sponsor("1_1005", "1_4002", "/group/sponsor", "1_2005") +
            sponsorship("1_6001", "WORK50") + sponsor("1_8888", "1_4007", "/sponsor", "1_2888") +
            sponsorship("1_6002", "BOTH"));
    auto const& record = *recordOf("49171");
    EXPECT_EQ(itemsText(record.accountInfo.ownDiscounts), "5003:OWN5 ");
    EXPECT_THAT(sharingText(record),
                ElementsAre("4002/1005/2005//group/sponsor 6001:WORK50:Sponsorship ",
                            "4003/1003/2003//group/sharing ",
                            "4007/1009/2009//group/sharing 5001:FAMILY10:DiscountSharing "
                            "5002:FAMILY20:DiscountSharing 5001:FAMILY10:DiscountSharing "
                            "6002:BOTH:Sponsorship "));

    // The lists of a refilled record come from the later EDR alone.
    process(head + ownAccount + sponsor("1_1005", "1_4002", "", "1_2005"));
    EXPECT_EQ(record.accountInfo.ownDiscounts.entries(), 0U);
    EXPECT_THAT(sharingText(record), ElementsAre("4002/1005/2005/ "));
}

TEST_F(PlugInFixture, IteratorThatCannotBePlacedEndsItsWalk) {
    start();
    struct {
        EDR::Iterator Probe::*iterator;
        char const* ownDiscounts;
        std::size_t owners;
        std::size_t priceModels;
    } const cases[] = {{&Probe::itDlPd, "", 0, 1},
                       {&Probe::itSlSd, "5001:OWN ", 0, 1},
                       {&Probe::itCbdCp, "5001:OWN ", 1, 0}};
    for (auto const& each : cases) {
        auto const bound = std::exchange(*plugIn.*each.iterator, EDR::Iterator());
        process(head + breakdown("981") + packet("R", "PLAN", "PM") + ownAccount +
                discountOwner("1_1001", "1_4001", "", "") + discount("1_5001", "OWN") +
                sponsor("1_1005", "1_4002", "", "") + sponsorship("1_6001", "WORK50"));
        *plugIn.*each.iterator = bound;
        auto const& record = *recordOf("49171");
        EXPECT_EQ(itemsText(record.accountInfo.ownDiscounts), each.ownDiscounts);
        EXPECT_EQ(record.sharingMap.entries(), each.owners);
        EXPECT_EQ(record.accountInfo.productInfo.priceModelCodes.entries(), each.priceModels);
    }
}

// An account without a number is account 0, and so is an owner without one.
TEST_F(PlugInFixture, OwnerWithoutANumberIsComparedAsAccountNothing) {
    start();
    process(head + std::vector<EdrStep>{{"CUST_A"}} + discountOwner("none", "", "", "") +
            discount("1_5001", "OWN"));
    EXPECT_EQ(itemsText(recordOf("49171")->accountInfo.ownDiscounts), "5001:OWN ");
    EXPECT_EQ(recordOf("49171")->sharingMap.entries(), 0U);
}

} // namespace DataDumpTest
