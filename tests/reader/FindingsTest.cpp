#include "DumpFile.h"
#include "facts/Amount.h"
#include "facts/Times.h"

#include <gmock/gmock.h>

namespace reader {

namespace {

struct EditedDump {
    char const* from;
    char const* to;
    char const* found;
};

// Facts of the demo's dump, each made wrong in one place.
constexpr EditedDump editedDumps[] = {
    {"  Account 1003: status ACTIVE", "  Account 1004: status ACTIVE",
     "account-differs 491713920003 customer 491713920003"},
    {"  Account 1003: status ACTIVE", "  Account 1003: status CLOSED",
     "account-inactive 491713920003 account 1003"},
    {"    >    3103  /service/message  ", "    >    3103  /service/telco    ",
     "service-type-differs 491713920003 service 3103"},
    {"    >    3103  /service/message  ", "         3103  /service/message  ",
     "service-absent 491713920003 service 3103"},
    {"       7103  SMS_STD  ", "       7103  SMS_BIZ  ",
     "plan-not-of-product 491713920003 rate plan SMS_STD"},
    {"  Rate plan id 21, model", "  Rate plan id 22, model",
     "rate-plan-id-differs 491713920003 rate plan SMS_STD version 2"},
    {"valid from 2024-01-01T00:00:00Z to open", "valid from 2027-01-01T00:00:00Z to open",
     "rate-plan-not-valid 491713920003 rate plan SMS_STD version 2"},
    {"Used Price model codes: PM_SMS_NAT   \n----------------------- \n 1 price model",
     "Used Price model codes: PM_SMS_NAT   \n----------------------- \n 2 price model",
     "unplaced 491713920003 a line"},
    {"  balance group 2003 of account 1003", "  balance group 2003 of account 1009",
     "balance-group-of-other-account 491713920003 balance group 2003"},
    {"EUR       1.3500         10.00", "EUR       1.3500          1.34",
     "over-credit-limit 491713920003 balance EUR of group 2003"},
    {"Event Account id         = 1003", "a stray line\nEvent Account id         = 1003",
     "unplaced 491713920003 a line"},
    {"Used Rating product Info:\n-------------------------\n", "Used Rating product Info:\n",
     "unplaced 491713920003 a line"},
    {" 1 balance group asked\n", " 1 price model asked\n 1 balance group asked\n",
     "unplaced 491713920003 a line"},
    {"Charging Start Time Stamp= 1795203110", "Charging Start Time Stamp= 18446744073709551615",
     "no-charging-start 491713920003 charging start"},
    {"Event Service Id         = 3103", "Event Service Id         = 0",
     "no-service 491713920003 service"},
    // After price models of another plan: no longer the plan of a roaming partner.
    {"Rate plan  Service  Event type           Status  Valid from            Valid to\n"
     "    -------  ---------  -------  -------------------  ------  --------------------  "
     "--------\n"
     "       7211  DATA_BIZ ",
     "Rate plan    Service  Event type           Status  Valid from            Valid to\n"
     "    -------  -----------  -------  -------------------  ------  --------------------  "
     "--------\n"
     "       7211  W_ROAM_DATA",
     "several-plans 001010000000011 price models"},
    // Values with a line end.
    {"status ACTIVE, currency", "status ACT\nIVE, currency", "unplaced 491713920003 2 lines"},
    {"  Rate plan id 21, model FLAT", "  Rate plan id 21, model FL\nAT",
     "unplaced 491713920003 2 lines"},
    {"codes: PM_SMS_NAT   \n", "codes: PM_SMS\n_NAT   \n", "unplaced 491713920003 a line"},
    {"Message to a domestic number\n", "Message to a\n domestic number\n",
     "unplaced 491713920003 9 lines"},
    {"Message to a domestic number\n", "Message to a\n      domestic number\n",
     "unplaced 491713920003 a line"},
    {"    Sub-balances, in", "    a stray line\n    Sub-balances, in",
     "unplaced 491713920003 a line"},
    {" 1 sponsorship object asked\n", " 1 sponsorship object asked\na stray line\n",
     "unplaced 491713920003 a line"},
    // A step within another, and one that follows it.
    {"         1     0   open    0.09    1  message  2024-01-01T00:00:00Z  open\n",
     "         1     0    100    0.09    1  message  2024-01-01T00:00:00Z  open\n"
     "         2    10     20    0.09    1  message  2024-01-01T00:00:00Z  open\n"
     "         3   100   open    0.09    1  message  2024-01-01T00:00:00Z  open\n",
     "price-overlap 491713920003 price model PM_SMS_NAT"},
};

TEST(Findings, areFoundOneForEachWrongFact) {
    auto const dump = demoDump();
    auto const before = findingsOf(dump);
    for (auto const& edit : editedDumps) {
        auto after = findingsOf(edited(dump, edit.from, edit.to));
        for (auto const& finding : before) {
            after.erase(finding);
        }
        EXPECT_THAT(after, testing::ElementsAre(edit.found)) << edit.from;
    }
}

// Charged by two packets, a discount stands twice in the event and in what memory holds.
TEST(Findings, areFoundOnceForADiscountThatStandsTwice) {
    std::string const item = "     Discount/Sponsorship Object id    : 5001\n"
                             "     Discount/Sponsorship model name   : FAMILY10\n";
    std::string const ownItem = "    Discount Object id    : 5040\n"
                                "    Discount model name   : DATA_PACK_2GB\n\n";
    std::string const row = "      5001  FAMILY10  /group/sharing   4001     1001  ";
    auto dump = edited(edited(demoDump(), item, item + item), ownItem, ownItem + ownItem);
    dump = edited(dump, row + "ACTIVE", row + "CLOSED");
    dump = edited(dump, "  5040  DATA_PACK_2GB      3211  /event/session/data  ACTIVE",
                  "  5040  DATA_PACK_2GB      3211  /event/session/data  CLOSED");
    std::string const absent = "    sponsorship object 6009: not in memory\n";
    std::string const next = " 2 discount models asked\n";
    dump = edited(dump, next, absent + absent + next);
    auto after = findingsOf(dump);
    for (auto const& finding : findingsOf(demoDump())) {
        after.erase(finding);
    }
    EXPECT_THAT(after, testing::ElementsAre("object-inactive 491713920003 discount 5001",
                                            "own-discount-inactive 001010000000011 own discount "
                                            "5040",
                                            "sponsorship-absent 491713920003 sponsorship 6009"));
}

// Prices that follow each other are no two for the same event, when nobody knows when it was.
TEST(Findings, needAChargingStartToJudgePrices) {
    auto const dump = edited(
        demoDump(), "         1     0   open    0.09    1  message  2024-01-01T00:00:00Z  open\n",
        "         1     0   open    0.09    1  message  2024-01-01T00:00:00Z  "
        "2025-01-01T00:00:00Z\n"
        "         2     0   open    0.09    1  message  2025-01-01T00:00:00Z  open\n");
    auto const before = findingsOf(demoDump());
    EXPECT_EQ(findingsOf(dump), before);
    auto after = findingsOf(edited(dump, "Time Stamp= 1795203110", "Time Stamp= 0"));
    for (auto const& finding : before) {
        after.erase(finding);
    }
    EXPECT_THAT(after, testing::ElementsAre("no-charging-start 491713920003 charging start"));
}

// A limit that is reached is no excess, an end that is not yet reached is valid.
TEST(Findings, areNotFoundAtTheVeryLimit) {
    auto const dump = demoDump();
    auto const before = findingsOf(dump);
    for (auto const& [from, to] :
         {std::pair{"EUR       1.3500         10.00", "EUR       1.3500          1.35"},
          std::pair{"valid from 2024-01-01T00:00:00Z to open",
                    "valid from 2026-11-20T19:31:50Z to 2026-11-20T19:31:51Z"}}) {
        EXPECT_EQ(findingsOf(edited(dump, from, to)), before) << to;
    }
}

TEST(Findings, compareAmountsDigitByDigit) {
    for (auto const& [one, other, order] :
         {std::tuple{"0.1", "0.10", 0}, std::tuple{"-0", "0", 0}, std::tuple{"9", "10", -1},
          std::tuple{"-9", "-10", 1}, std::tuple{"0.00000000000000000001", "0", 1},
          std::tuple{"99999999999999999999.1", "99999999999999999999.09", 1}}) {
        auto const compared = compareAmounts(one, other);
        ASSERT_TRUE(compared);
        EXPECT_EQ(*compared <=> 0 == 0 ? 0 : std::is_lt(*compared) ? -1 : 1, order) << one;
    }
    EXPECT_FALSE(compareAmounts("none", "1"));
}

TEST(Findings, tellHowFarTimesAreApart) {
    EXPECT_EQ(distance("2026-11-01T00:00:00Z", "2026-11-20T20:02:44Z"), "19 days");
    EXPECT_EQ(distance("2026-11-20T19:02:44Z", "2026-11-20T20:02:44Z"), "1 hour");
    EXPECT_FALSE(chargingSeconds("0"));
    EXPECT_FALSE(chargingSeconds("253402300800"));
    EXPECT_TRUE(chargingSeconds("253402300799"));
    for (auto const* const time : {"2026-11-20T24:00:00Z", "2026-11-20T12:60:00Z", "2026-02-29",
                                   "2026-11-20T12:00:00", "20-11-2026", ""}) {
        EXPECT_FALSE(isoSeconds(time)) << time;
    }
}

// The guide and the program explain each kind with the same words.
TEST(Findings, areExplainedInTheGuide) {
    auto const guide = textOf(GUIDE);
    for (std::size_t i = 0; i < findingKinds.size(); ++i) {
        auto const& kind = findingKinds[i];
        EXPECT_EQ(static_cast<std::size_t>(kind.kind), i);
        auto const row = "| `" + std::string(kind.name) + "` | " +
                         std::string(nameOf(kind.severity)) + " | " + std::string(kind.sentence) +
                         " |\n";
        EXPECT_NE(guide.find(row), std::string::npos) << row;
    }
}

} // namespace

} // namespace reader
