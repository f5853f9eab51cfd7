#include "DumpFile.h"
#include "program/Program.h"

#include <gmock/gmock.h>

namespace reader {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Printed {
    int exitCode = 0;
    std::vector<std::string> lines;
};

// What the program prints to standard output.
Printed printedBy(std::vector<char const*> arguments) {
    arguments.insert(arguments.begin(), "datadump");
    testing::internal::CaptureStdout();
    Printed printed;
    printed.exitCode = runProgram(static_cast<int>(arguments.size()), arguments.data());
    std::istringstream text(testing::internal::GetCapturedStdout());
    for (std::string line; std::getline(text, line);) {
        printed.lines.push_back(line);
    }
    return printed;
}

class Diff : public testing::Test {
protected:
    Printed differences(std::string const& older, std::string const& newer,
                        std::vector<char const*> options = {}) {
        auto const oldFile = write("old.txt", older);
        auto const newFile = write("new.txt", newer);
        options.insert(options.begin(), {"diff", oldFile.c_str(), newFile.c_str()});
        return printedBy(options);
    }

    std::string write(char const* name, std::string const& text) {
        auto const path = directoryM.path() / name;
        std::ofstream(path, std::ios::binary) << text;
        return path.string();
    }

    support::TemporaryDirectory directoryM;
};

struct Edit {
    char const* from;
    char const* to;
    char const* difference;
};

// Each in the demo's first event.
constexpr Edit edits[] = {
    {"  Account 1003: status ACTIVE", "  Account 1003: status CLOSED",
     "account 1003: status ACTIVE → CLOSED, 1 event"},
    {"    >    3103  /service/message  491713920003  ACTIVE\n", "",
     "account 1003 service 3103: gone, 1 event"},
    {"       7103  SMS_STD  ", "       7103  SMS_BIZ  ",
     "account 1003 product 7103: Rate plan SMS_STD → SMS_BIZ, 1 event"},
    {"  Others: 7003 VOICE_STD\n", "",
     "account 1003: other products 7003 VOICE_STD → nothing, 1 event"},
    {"  Rate plan id 21, model FLAT", "  Rate plan id 21, model STEP",
     "rate plan SMS_STD version 2: model FLAT → STEP, 1 event"},
    {"         1     0   open    0.09    1  message",
     "         1     0   open    0.19    1  message",
     "price model PM_SMS_NAT step 1: Amount 0.09 → 0.19, 1 event"},
    {"  price model PM_SMS_NAT: Message to a domestic number\n",
     "  price model PM_SMS_NAT: not in memory\n Nothing",
     "price model PM_SMS_NAT: in memory → not in memory, 1 event"},
    {"  balance group 2003 of account 1003", "  balance group 2003 of account 1004",
     "balance group 2003: account 1003 → 1004, 1 event"},
    {"      EUR                 1  14.2000  2026-10-01T00:00:00Z  2026-11-01T00:00:00Z\n", "",
     "balance group 2001 sub-balance EUR 1: gone, 1 event"},
    {"      5001  FAMILY10  /group/sharing   4001     1001  ACTIVE",
     "      5001  FAMILY10  /group/sharing   4001     1001  CLOSED",
     "discount 5001: Status ACTIVE → CLOSED, 1 event"},
    {"           1     1     0    500      100", "           1     1     0    600      100",
     "discount model SPON_TEEN_SMS step 1 1: Below 500 → 600, 1 event"},
    {"Event Balance Group id   = 2003", "Event Balance Group id   = 2004",
     "event: balance group 2003 → 2004, 1 event"},
    {"Charging Start Time Stamp= 1795203110", "Charging Start Time Stamp= 1795203111",
     "event: charging start differs, 1 event, such as 1795203110 → 1795203111"},
    {"     Discount/Sponsorship Object id    : 5050",
     "     Discount/Sponsorship Object id    : 5051",
     "event: sharing owners /group/sharing 4001, account 1001, balance group 2001 (5001 FAMILY10, "
     "6001 SPON_TEEN_SMS), /group/sharing 4050, account 1050, balance group 2050 (5050 CLUB_SMS) → "
     "/group/sharing 4001, account 1001, balance group 2001 (5001 FAMILY10, 6001 SPON_TEEN_SMS), "
     "/group/sharing 4050, account 1050, balance group 2050 (5051 CLUB_SMS), 1 event"},
};

TEST_F(Diff, namesTheFactThatChanged) {
    auto const dump = demoDump();
    for (auto const& edit : edits) {
        auto const printed = differences(dump, edited(dump, edit.from, edit.to));
        EXPECT_THAT(printed.lines, ElementsAre(edit.difference)) << edit.from;
        EXPECT_EQ(printed.exitCode, foundOrDifferent);
    }
    EXPECT_THAT(differences(dump, edited(dump, edits[0].from, edits[0].to), {"--by-event"}).lines,
                ElementsAre("491713920003 SMS: account 1003: status ACTIVE → CLOSED"));
}

// The demo's second event was charged by one price model twice.
TEST_F(Diff, countsAnEventOnce) {
    auto const dump = demoDump();
    std::string const step = "   open    0.35";
    auto const newer = edited(edited(dump, step, "   open    0.36"), step, "   open    0.36");
    EXPECT_THAT(differences(dump, newer).lines,
                ElementsAre("price model PM_DATA_ROAM_Z2 step 1: Amount 0.35 → 0.36, 1 event"));
    EXPECT_THAT(differences(dump, newer, {"--by-event"}).lines,
                ElementsAre("001010000000011 GPRS: price model PM_DATA_ROAM_Z2 step 1: Amount "
                            "0.35 → 0.36"));
}

TEST_F(Diff, namesWhatChangedOfAnOwner) {
    auto const dump = demoDump();
    for (auto const* const row : {"    Account id : ", "    Owner Type : ", "    BalGrp id  : "}) {
        EXPECT_THAT(differences(dump, edited(dump, row, row + std::string("9"))).lines,
                    ElementsAre(testing::StartsWith("event: sharing owners /group/sharing 4001, "
                                                    "account 1001, balance group 2001 (")))
            << row;
    }
}

// What the filter looks at may be what changed; the event's objects are compared all the same.
TEST_F(Diff, choosesEventsByWhatEitherFileSays) {
    auto const dump = demoDump();
    auto const newer =
        edited(edited(dump, "Event Account id         = 1003", "Event Account id         = 17"),
               edits[0].from, edits[0].to);
    for (auto const* const account : {"1003", "17"}) {
        EXPECT_THAT(differences(dump, newer, {"--account", account}).lines,
                    ElementsAre(edits[0].difference, "event: account 1003 → 17, 1 event"));
    }
    EXPECT_THAT(differences(dump, newer, {"--account", "2"}).lines, IsEmpty());
}

TEST_F(Diff, isBlindToOrderAndNumber) {
    auto const dump = demoDump();
    auto const second = dump.find("Begin: 2\n");
    auto const third = dump.find("Begin: 3\n");
    auto const events = dump.substr(second, third - second) + dump.substr(0, second);
    auto const rows = edited(dump,
                             "         3003  /service/telco    491713920003  ACTIVE\n"
                             "    >    3103  /service/message  491713920003  ACTIVE\n",
                             "    >    3103  /service/message  491713920003  ACTIVE\n"
                             "         3003  /service/telco    491713920003  ACTIVE\n");
    for (auto const& newer : {dump, events + dump.substr(third), rows}) {
        auto const printed = differences(dump, newer);
        EXPECT_THAT(printed.lines, IsEmpty());
        EXPECT_EQ(printed.exitCode, done);
    }
    EXPECT_THAT(differences(dump, dump.substr(second)).lines,
                testing::Contains("event: 491713920003 SMS only in the older file"));
}

// What happened to many is one line.
TEST_F(Diff, foldsWhatIsAlike) {
    auto const dump = demoDump();
    std::string rows;
    for (int i = 2; i <= 8; ++i) {
        rows += "      EUR                 " + std::to_string(i) +
                "  1.3500  2026-11-01T00:00:00Z  2026-12-01T00:00:00Z\n";
    }
    std::string const row =
        "      EUR                 1  1.3500  2026-11-01T00:00:00Z  2026-12-01T00:00:00Z\n";
    EXPECT_THAT(differences(dump, edited(dump, row, row + rows)).lines,
                ElementsAre("balance group sub-balance: new, 7 times, such as balance group 2003 "
                            "sub-balance EUR 2: new"));
}

TEST_F(Diff, foldsWhatHappenedToManyObjects) {
    auto const dump = demoDump();
    auto const event = dump.substr(0, dump.find("Begin: 2\n"));
    std::string many;
    for (int i = 1; i <= 6; ++i) {
        auto const number = std::to_string(i);
        many += edited(edited(edited(event, "Begin: 1", "Begin: " + number), "491713920003   ",
                              number + "   "),
                       "  Account 1003:", "  Account " + number + ":");
    }
    auto const closed = [](std::string text, int accounts) {
        while (accounts-- > 0) {
            text = edited(text, "status ACTIVE,", "status CLOSED,");
        }
        return text;
    };
    EXPECT_THAT(differences(many, closed(many, 5)).lines,
                testing::AllOf(testing::SizeIs(5), testing::Contains("account 5: status ACTIVE → "
                                                                     "CLOSED, 1 event")));
    EXPECT_THAT(differences(many, closed(many, 6)).lines,
                ElementsAre("account: status ACTIVE → CLOSED, 6 times, such as account 1: status "
                            "ACTIVE → CLOSED"));
}

// Their tables are compared by the columns that tell rows apart.
TEST_F(Diff, comparesTextsOfOtherModules) {
    std::string const own = " 0 discount objects asked\n 0 discount models asked\n";
    std::string const foreign = "Legacy discounts of 17\n"
                                "  List\n"
                                "    Name  Kind  Share\n"
                                "    ----  ----  -----\n"
                                "    A     one       5\n"
                                "    A     two       6\n";
    auto const dump = edited(demoDump(), own, foreign);
    EXPECT_THAT(
        differences(dump, edited(dump, "    A     two       6", "    A     two       7")).lines,
        ElementsAre("ownDiscounts text of 491713920003 SMS List A two: Share 6 → 7, 1 event"));
    EXPECT_THAT(
        differences(dump, edited(dump, "of 17\n", "of 18\n")).lines,
        ElementsAre("ownDiscounts text of 491713920003 SMS: line \"Legacy discounts of 17\": "
                    "gone, 1 event",
                    "ownDiscounts text of 491713920003 SMS: line \"Legacy discounts of 18\": "
                    "new, 1 event"));
    std::string const shared =
        " 1 discount object asked\n    Object  Model     Owner type      Owner";
    auto const sharing = edited(demoDump(), shared, "Legacy 5001\n" + shared.substr(26));
    EXPECT_THAT(differences(sharing, edited(sharing, "Legacy 5001", "Legacy 5002")).lines,
                testing::Each(testing::HasSubstr("text of 491713920003 SMS and owner 4001")));
}

TEST_F(Diff, ofTwoHostsIsAFindingThatNamesTheFact) {
    auto const dump = demoDump();
    auto const one = write("one.txt", dump);
    auto const other = write("other.txt", edited(dump, edits[5].from, edits[5].to));
    auto const printed = printedBy({"findings", "--severity", "mismatch", "--customer",
                                    "491713920003", one.c_str(), other.c_str()});
    EXPECT_THAT(printed.lines,
                ElementsAre(other +
                            ":44: mismatch differs-between-files: 491713920003 SMS: price "
                            "model PM_SMS_NAT; memory holds: step 1: Amount 0.09 → 0.19; "
                            "as against " +
                            one + ":44"));
    EXPECT_EQ(printed.exitCode, foundOrDifferent);
}

} // namespace

} // namespace reader
