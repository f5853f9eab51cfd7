// Runs the real program on generated input, with the real plug-in and data modules.
#include "generate/GeneratorCatalogue.h"
#include "support/TemporaryDirectory.h"

#include <gmock/gmock.h>

#include <sys/wait.h>

#include <cstdlib>

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

} // namespace
