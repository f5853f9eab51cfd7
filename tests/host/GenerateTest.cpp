// Runs the real program on generated input, with the real plug-in and data modules.
#include "generate/GeneratorCatalogue.h"
#include "generate/GeneratorRandom.h"
#include "support/TemporaryDirectory.h"

#include <gmock/gmock.h>

#include <sys/wait.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>

namespace {

using testing::HasSubstr;
using testing::Not;

class Generate : public testing::Test {
protected:
    // Runs a command line in the directory; the program is $HOST.
    int shell(std::string const& commands) {
        auto const line = "cd '" + directoryM.path().string() +
                          "' && HOST='" HOST_PROGRAM "' && { " + commands + "; } >out 2>err";
        int const status = std::system(line.c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    std::string read(std::string const& name) const { return directoryM.read(name); }

    support::TemporaryDirectory directoryM;
};

TEST_F(Generate, MakesWhatRunsWithoutAReject) {
    ASSERT_EQ(shell("$HOST generate --output g --events 600 --customers 60 --seed 5 && cd g && "
                    "cat reference-schema.sql reference-data.sql | sqlite3 -bail reference.db"),
              0)
        << read("err");
    auto const plugIn = std::string("host.Pipelines.Main.Functions.DataDump.Module");
    // A dump of every event that there is: whatever an EDR names must be in the reference data.
    ASSERT_EQ(shell("sed -i 's/NumberOfEvents: 10/NumberOfEvents: 1000/' g/registry.yaml && "
                    "$HOST run g/registry.yaml --at-end '" +
                    plugIn + " DumpEvents=events' --at-end '" + plugIn + " Dump=dump'"),
              0)
        << read("err");
    EXPECT_THAT(read("err"), HasSubstr("read: 602, details: 600, rejected: 0"));
    EXPECT_THAT(read("err"), Not(HasSubstr("ERR_")));
    auto const dump = read("dump");
    EXPECT_THAT(dump, Not(HasSubstr("not in memory")));
    EXPECT_THAT(dump, Not(HasSubstr("the event has it as type")));
    EXPECT_THAT(dump, Not(testing::ContainsRegex("(Products|Entries) for [^\n]*: 0 of ")));
    auto const events = read("events");
    for (auto const& service : host::services) {
        EXPECT_THAT(events, HasSubstr("Service Code = " + std::string(service.code) + "\n"));
    }
    for (auto const* const part :
         {"Event's own Discount:\n    Discount Object id    : 5", "Owner Type : /group/sharing",
          "Owner Type : /group/sponsor", "Used Price model codes: PM_VOICE_SETUP   PM_VOICE_"}) {
        EXPECT_THAT(events, HasSubstr(part));
    }
    auto const edrs = read("g/events.jsonl");
    EXPECT_THAT(edrs, HasSubstr("\"UTC_TIME_OFFSET\":\"-0"));
    EXPECT_THAT(edrs, HasSubstr("\"RECORD_TYPE\":\"982\""));
    EXPECT_THAT(edrs, testing::EndsWith("\"TOTAL_RECORDS\":\"600\"}\n"));
}

TEST_F(Generate, MakesTheSameOfTheSameSeedAndOfAnotherSeedOthers) {
    ASSERT_EQ(
        shell("for d in a b; do $HOST generate --output $d --customers 1 --events 50; done && "
              "diff -r a b && $HOST generate --output c --customers 1 --events 50 --seed 2 && "
              "$HOST generate --output d --customers 1 --events 0"),
        0)
        << read("out") << read("err");
    EXPECT_NE(read("a/events.jsonl"), read("c/events.jsonl"));
    EXPECT_THAT(read("d/events.jsonl"), Not(HasSubstr("DETAIL")));
}

TEST_F(Generate, ReplacesNothingUnasked) {
    ASSERT_EQ(shell("mkdir g && echo mine >g/reference-data.sql"), 0);
    EXPECT_EQ(shell("$HOST generate --output g"), 4);
    EXPECT_THAT(read("err"), HasSubstr("'g/reference-data.sql' can't be written: it exists "
                                       "already; --force replaces it"));
    EXPECT_EQ(read("g/reference-data.sql"), "mine\n");
    EXPECT_FALSE(std::filesystem::exists(directoryM.path() / "g" / "registry.yaml"));
    EXPECT_EQ(shell("$HOST generate --output g --force --events 1"), 0);
    EXPECT_THAT(read("g/reference-data.sql"), HasSubstr("COMMIT;"));
    EXPECT_EQ(shell("$HOST generate --output out"), 4) << "that is a file";
    EXPECT_EQ(shell("$HOST generate --customers 0"), 2);
}

// The shares of the first ranks are those of the law, within six standard deviations.
TEST(ZipfDistribution, DrawsRanksInProportionToTheirReciprocals) {
    constexpr std::size_t ranks = 50;
    constexpr int draws = 100'000;
    host::ZipfDistribution const zipf(ranks);
    host::GeneratorRandom random(42);
    std::vector<int> counts(ranks);
    for (int i = 0; i < draws; ++i) {
        ++counts.at(zipf(random));
    }
    double sum = 0;
    for (std::size_t rank = 1; rank <= ranks; ++rank) {
        sum += 1.0 / static_cast<double>(rank);
    }
    for (std::size_t rank = 0; rank < ranks; ++rank) {
        auto const expected = draws / (static_cast<double>(rank + 1) * sum);
        EXPECT_NEAR(counts[rank], expected, 6 * std::sqrt(expected)) << rank;
    }
}

// Every event that can be drawn is charged.
TEST(GeneratorCatalogue, HasAPriceForEveryTariffAndCategory) {
    std::map<std::string_view, std::vector<std::string_view>> const categories = {
        {"TEL", {"ONNET", "DOMESTIC", "INTERNATIONAL", "ROAM_Z2", "ROAM_Z3"}},
        {"SMS", {"ONNET", "DOMESTIC", "INTERNATIONAL", "ROAM_Z2", "ROAM_Z3"}},
        {"GPRS", {"DOMESTIC", "ROAM_Z2", "ROAM_Z3"}},
        {"CNT", {"FILM", "MUSIC"}},
    };
    for (auto const& segment : host::segments) {
        for (std::size_t service = 0; service < host::services.size(); ++service) {
            auto const* const plan = host::findRateplan(segment[service].rateplan);
            ASSERT_NE(plan, nullptr) << segment[service].rateplan;
            EXPECT_EQ(plan->serviceCode, host::services[service].code);
            for (auto const category : categories.at(plan->serviceCode)) {
                EXPECT_TRUE(std::any_of(host::rateplanEntries.begin(), host::rateplanEntries.end(),
                                        [&](host::RateplanEntry const& entry) {
                                            return entry.rateplan == plan->code &&
                                                   entry.impactCategory == category &&
                                                   host::findPriceModel(entry.priceModel) !=
                                                       nullptr;
                                        }))
                    << plan->code << " " << category;
            }
        }
    }
}

} // namespace
