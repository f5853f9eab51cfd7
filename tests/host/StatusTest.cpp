// What a running host shows of itself, to whom, and what nobody takes for a running host.
#include "ServiceFixture.h"

#include "BAS/Status.h"
#include "run/ValueCounter.h"
#include "watch/RateMeter.h"
#include "watch/StatusFile.h"
#include "watch/StatusText.h"

#include <simdjson.h>

#include <barrier>
#include <optional>

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace {

class Status : public ServiceFixture {
protected:
    Status() { std::filesystem::create_directory(pathOf("s")); }

    // Runs the command and returns its exit code; its output is in s/out and s/err.
    int status(std::vector<std::string> const& options = {}) const {
        std::vector<std::string> arguments = {"status", "../r.yaml"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return HostProcess(pathOf("s"), arguments).wait();
    }
    std::string shown() const { return directoryM.read("s/out"); }

    void replaceInRegistry(std::string const& part, std::string const& other) const {
        auto text = directoryM.read("r.yaml");
        text.replace(text.find(part), part.size(), other);
        directoryM.write("r.yaml", text);
    }
};

} // namespace

TEST_F(Status, isToldWhileACommandBlocksThePipeline) {
    writeRegistry("{Directory: in}", gate());
    HostProcess host(directoryM.path(), {"run", "r.yaml"});
    openGate(1);
    drop("in/edrs.jsonl", edrs(3));
    ASSERT_TRUE(waitForText("trace", "at gate", 2)) << "the second batch stands there";
    // The first batch may have been at work, too, when the status was written.
    ASSERT_TRUE(eventually([&] {
        return status({"--json"}) == 0 && count(shown(), "\"PlugInAtWork\": {") == 1 &&
               count(shown(), "\"Read\": 2,") == 1;
    }));
    simdjson::dom::parser parser;
    auto const before = parser.parse(simdjson::padded_string(shown()));
    auto const pipeline = before["Pipelines"].at(0);
    EXPECT_EQ(std::uint64_t(pipeline["Input"]["Byte"]), 20U);
    EXPECT_THAT(std::string(pipeline["Input"]["File"]), testing::EndsWith("/in/edrs.jsonl"));
    EXPECT_EQ(std::string_view(pipeline["PlugInAtWork"]["Object"]), object);
    auto const late =
        host::statusTables(shown(), std::chrono::system_clock::now() + std::chrono::hours(1));
    EXPECT_THAT(late, HasSubstr("The status is of 1 h 0 min ago"));
    EXPECT_EQ(count(late, "1 h 0 min"), 3U) << "also up, and since the last batch\n" << late;
    openGate(1);

    drop("cmd/a.yaml", std::string(object) + ": {Refuse: ''}\n");
    ASSERT_TRUE(waitForFile("cmd/a.result"));
    drop("cmd/b.yaml", std::string(object) + ": {Wait: \"a \\x1b\"}\n");
    ASSERT_TRUE(waitForText("trace", "at gate", 3));
    ASSERT_TRUE(eventually([&] {
        return status() == 0 && count(shown(), R"({"Wait":)") == 1 &&
               count(shown(), "P            3        3         0") == 1;
    }));
    EXPECT_THAT(shown(), AllOf(HasSubstr("pipeline-host 1."),
                               HasSubstr("function plug-in  yes    ERR_REG_VALUE_INVALID: "),
                               HasSubstr(R"({"Wait":"a \u001b"})"), HasSubstr("rejected")));
    openGate(1);
    ASSERT_TRUE(waitForFile("cmd/b.result"));
    host.signal(SIGTERM);
    EXPECT_EQ(host.wait(), 0);
    EXPECT_EQ(status(), 75);
    EXPECT_FALSE(std::filesystem::exists(pathOf("cmd/.status")));
}

TEST_F(Status, isThatOfARunningHostOnly) {
    auto const deep = std::string(120, 'd');
    std::filesystem::create_directory(pathOf(deep));
    replaceInRegistry("  Commands: {Directory: cmd}\n", "");
    EXPECT_EQ(status(), 3);
    EXPECT_THAT(directoryM.read("s/err"), HasSubstr("expected 'Commands: {Directory: ...}' or"));
    replaceInRegistry("host:\n", "host:\n  Status: {File: " + deep + "/status}\n");
    EXPECT_EQ(status(), 75);
    {
        HostProcess host(directoryM.path(), {"run", "r.yaml"});
        ASSERT_TRUE(eventually([&] { return status() == 0; }));
        EXPECT_EQ(HostProcess(pathOf("s"), {"run", "../r.yaml"}).wait(), 3);
        EXPECT_THAT(directoryM.read("s/err"), Not(HasSubstr("MSG_STARTED")));
        host.signal(SIGKILL);
        EXPECT_EQ(host.wait(), -SIGKILL);
    }
    EXPECT_TRUE(std::filesystem::exists(pathOf(deep) / "status"));
    EXPECT_EQ(status(), 75);
    HostProcess const next(directoryM.path(), {"run", "r.yaml"});
    EXPECT_TRUE(eventually([&] { return status() == 0; }));
}

TEST_F(Status, fileIsNeverTakenForThatOfADeadHostWhileItIsReplaced) {
    auto const file = pathOf("status");
    host::StatusFile written(file);
    written.write("{}");
    std::jthread const writer([&](std::stop_token const& stop) {
        while (!stop.stop_requested()) {
            written.write("{}");
        }
    });
    for (int i = 0; i < 2000; ++i) {
        ASSERT_EQ(host::readStatusFile(file), "{}") << i;
    }
    EXPECT_THROW(host::StatusFile{file}, BAS::Status);
}

TEST_F(Status, fileBelongsToOneOfTheHostsThatStartAtTheSameTime) {
    auto const file = pathOf("status");
    for (int i = 0; i < 100; ++i) {
        std::barrier begin(2);
        std::atomic<int> refused = 0;
        std::optional<host::StatusFile> taken[2];
        auto const take = [&](int number) {
            begin.arrive_and_wait();
            try {
                taken[number].emplace(file);
            } catch (BAS::Status const&) {
                ++refused;
            }
        };
        {
            std::jthread const one(take, 0);
            std::jthread const other(take, 1);
        }
        ASSERT_EQ(refused, 1);
        EXPECT_EQ(host::readStatusFile(file), std::nullopt) << "nothing is written yet";
        auto& winner = *taken[taken[0] ? 0 : 1];
        winner.write("{}");
        EXPECT_EQ(host::readStatusFile(file), "{}");
    }
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST(RateMeter, goesByTheLastMinute) {
    using std::chrono::milliseconds;
    host::RateMeter::TimePoint const start;
    host::RateMeter rate;
    EXPECT_EQ(rate.perSecond(), 0);
    for (int i = 0; i <= 1200; ++i) { // 100 a second for two minutes, looked at ten times a second
        rate.add(start + milliseconds(100 * i), static_cast<std::uint64_t>(10 * i));
    }
    EXPECT_DOUBLE_EQ(rate.perSecond(), 100);
    for (int i = 0; i < 90; ++i) {
        rate.add(start + milliseconds(121'000 + 1000 * i), 12'000);
    }
    EXPECT_DOUBLE_EQ(rate.perSecond(), 0);
}

TEST(ValueCounter, keepsTheFirstThousandShortValues) {
    host::ValueCounter counter;
    for (int i = 0; i < 2002; ++i) {
        counter.count(std::to_string(i % 1001));
    }
    counter.count(std::string(host::ValueCounter::longestValue + 1, 'x'));
    EXPECT_EQ(counter.values().size(), host::ValueCounter::mostValues);
    EXPECT_EQ(counter.values().at("999"), 2U);
    EXPECT_EQ(counter.others(), 3U);
}
