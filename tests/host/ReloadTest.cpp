// Data that are replaced while the host runs: what waits for it, what doesn't, and what is refused.
#include "ServiceFixture.h"

#include "DAT/LoadSession.h"
#include "run/Reloader.h"

#include <fmt/format.h>

#include <semaphore>

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace {

constexpr char const* one = "host.DataPool.One.Module";
constexpr char const* pool = "host.DataPool";

constexpr char const* registry = R"(host:
  Commands: {{Directory: cmd{}}}
  DataPool:
    One: {}
    Two: {}
  Pipelines:
    P:
      EdrDescription: edr.yaml
      Input: {}
      Functions:
        F: {{ModuleName: TestCounter, Module: {{Trace: {}}}}}
)";

class Reload : public ServiceFixture {
protected:
    Reload() {
        directoryM.write("one", "a\nb\n");
        directoryM.write("two", "x\n");
        writeDataRegistry("");
    }

    // The data modules One and Two hold the files of their names.
    void writeDataRegistry(std::string const& keysOfOne,
                           std::string const& input = "{Directory: in}",
                           char const* keysOfCommands = "") const {
        auto const trace = pathOf("trace").string();
        auto const module = [&](char const* file, std::string const& keys) {
            return fmt::format("{{ModuleName: TestData, Module: {{Trace: {}, File: {}{}}}}}", trace,
                               pathOf(file).string(), keys);
        };
        directoryM.write("r.yaml", fmt::format(registry, keysOfCommands, module("one", keysOfOne),
                                               module("two", ""), input, trace));
    }

    // Gives a command and returns the result file's text.
    std::string answer(std::string const& name, std::string const& target,
                       std::string const& keys) const {
        drop("cmd/" + name + ".yaml", fmt::format("{}: {{{}}}\n", target, keys));
        EXPECT_TRUE(waitForFile("cmd/" + name + ".result")) << directoryM.read("err");
        return directoryM.read("cmd/" + name + ".result");
    }
};

// Returns what it has when it is to stop, as if that were everything.
class CutModule : public DAT::Reloadable {
public:
    std::binary_semaphore begun{0};

    std::unique_ptr<DAT::NewData> readNewData(DAT::LoadSession& session) override {
        begun.release();
        while (!session.stop().stop_requested()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return std::make_unique<CutData>();
    }
    DAT::LoadReport loadReport() const override { return {}; }
    void recordReload(BAS::Status const&) override {}

private:
    class CutData : public DAT::NewData {
    public:
        DAT::LoadReport const& report() const noexcept override { return reportM; }
        void takeOver() noexcept override {}

    private:
        DAT::LoadReport reportM;
    };
};

} // namespace

TEST(Reloader, takesCutDataForAFailure) {
    CutModule module;
    std::string failure = "not done";
    host::Reload reload;
    reload.modules = {{"host.DataPool.Cut.Module", &module}};
    reload.done = [&](host::Reload& read) {
        failure = read.failure ? read.failure->messageName().str() : "none";
    };
    host::Reloader reloader;
    reloader.begin(std::move(reload));
    module.begun.acquire();
    EXPECT_TRUE(reloader.stop(std::chrono::seconds(30)));
    EXPECT_EQ(failure, "ERR_RELOAD_GIVEN_UP");
}

TEST_F(Reload, takesAModulesDataOverOrRefusesThemAndTellsWhy) {
    struct {
        char const* lines; // null: the file is gone
        char const* keys;
        char const* told;
    } const cases[] = {
        {"a\nb\nc\nbad\n", "Reload: ''", "Loaded 3 rows, rejected 1, from '"},
        {nullptr, "Reload: ''",
         "ERR_DATABASE\", \"Level\": \"error\", \"Text\": \"Database error: no file"},
        {"bad\n", "Reload: ''", "no usable row any more: LINES (had 3)"},
        {"a\n", "Reload: now", "The registry value 'now' is invalid: expected nothing or 'force'."},
        {"bad\n", "Reload: force", "Loaded 0 rows, rejected 1, from '"},
        {"", "Reload: ''", "Loaded 0 rows, rejected 0, from '"}, // was empty before
    };
    HostProcess host(directoryM.path(), {"run", "r.yaml"});
    int number = 0;
    for (auto const& [lines, keys, told] : cases) {
        std::filesystem::remove(pathOf("one"));
        if (lines != nullptr) {
            directoryM.write("one", lines);
        }
        bool const isTaken = std::string(told).starts_with("Loaded");
        EXPECT_THAT(answer(fmt::format("c{}", ++number), one, keys),
                    AllOf(HasSubstr(told),
                          HasSubstr(isTaken ? "Verdict: \"handled\"" : "Verdict: \"rejected\"")));
    }
    EXPECT_THAT(answer("d", one, "Reload: '', Relaod: ''"), HasSubstr("Ignored: [\"Relaod\"]"));
    EXPECT_THAT(answer("f", one, "Relaod: ''"),
                HasSubstr("Ignored: [\"Relaod\"]\n    DidYouMean: {\"Relaod\": \"Reload\"}"));
    EXPECT_THAT(answer("e", "host.Pipelines.P.Functions.F.Module", "Reload: ''"),
                HasSubstr("Ignored: [\"Reload\"]"));
}

TEST_F(Reload, takesThePoolOverAsAWholeOrNotAtAll) {
    HostProcess const host(directoryM.path(), {"run", "r.yaml"});
    directoryM.write("one", "a\n");
    directoryM.write("two", "x\ny\nbad\n");
    EXPECT_THAT(answer("c1", pool, "Reload: ''"),
                AllOf(HasSubstr("Reloaded together. One: Loaded 1 rows, rejected 0, from '"),
                      HasSubstr("/one' in "), HasSubstr(" Two: Loaded 2 rows, rejected 1, from '"),
                      HasSubstr("/two' in "), HasSubstr(": LINES 2 (1 rejected); reading began")));
    directoryM.write("one", "a\nb\nc\nd\n");
    std::filesystem::remove(pathOf("two"));
    EXPECT_THAT(answer("c2", pool, "Reload: ''"),
                AllOf(HasSubstr("Handled: false"), HasSubstr("WorkDone: false"),
                      HasSubstr("Nothing is reloaded because of 'host.DataPool.Two.Module'")));
    directoryM.write("one", "");
    EXPECT_THAT(answer("c3", one, "Reload: ''"), HasSubstr("LINES (had 1)"));
}

TEST_F(Reload, letsOtherCommandsAndBatchesPassMeanwhile) {
    writeDataRegistry(gate());
    HostProcess const host(directoryM.path(), {"run", "r.yaml"});
    drop("cmd/a.yaml", std::string(one) + ": {Reload: ''}\n" + object + ": {Number: 1}\n");
    ASSERT_TRUE(waitForText("trace", "One at gate"));
    drop("in/edrs.jsonl", edrs(2));
    ASSERT_TRUE(waitForText("trace", "F batch of 2"));
    EXPECT_THAT(answer("b", object, "Number: 2"), HasSubstr("Handled: true"));
    EXPECT_THAT(names("cmd"), testing::Contains("a.taken"));
    EXPECT_THAT(directoryM.read("trace"), Not(HasSubstr("number 1"))) << "waits in its file";
    openGate(1);
    ASSERT_TRUE(waitForFile("cmd/a.result"));
    EXPECT_THAT(directoryM.read("cmd/a.result"), HasSubstr("Loaded 2 rows"));
    EXPECT_THAT(directoryM.read("trace"), HasSubstr("number 1"));
}

TEST_F(Reload, isAnsweredAndEndsTheHostWhenItsModuleDoesNotReturn) {
    writeDataRegistry(gate() + ", Deaf: 1", "{Directory: in}", ", StopTimeout: 1");
    HostProcess stopped(directoryM.path(), {"run", "r.yaml"});
    drop("cmd/a.yaml", std::string(pool) + ": {Reload: ''}\n" + one + ": {Reload: ''}\n");
    drop("cmd/b.yaml", std::string(one) + ": {Reload: ''}\n");
    ASSERT_TRUE(waitForText("trace", "One at gate") && waitForFile("cmd/b.taken"));
    stopped.signal(SIGTERM);
    EXPECT_EQ(stopped.wait(), 4);
    EXPECT_EQ(count(directoryM.read("cmd/a.result"), "ERR_RELOAD_GIVEN_UP"), 2U);
    EXPECT_EQ(count(directoryM.read("cmd/b.result"), "ERR_RELOAD_GIVEN_UP"), 1U);
    EXPECT_THAT(directoryM.read("err"), HasSubstr("ERR_RELOAD_STUCK"));

    directoryM.write("edrs.jsonl", edrs(1));
    writeDataRegistry(gate() + ", Deaf: 1", "{Files: [edrs.jsonl]}", ", StopTimeout: 1");
    HostProcess ended(directoryM.path(),
                      {"run", "r.yaml", "--at-end", std::string(pool) + " Reload"});
    ASSERT_TRUE(waitForText("trace", "One at gate", 2));
    ended.signal(SIGTERM);
    EXPECT_EQ(ended.wait(), 4);
    EXPECT_THAT(directoryM.read("err"), HasSubstr("ERR_RELOAD_GIVEN_UP"));
}

TEST_F(Reload, isGivenUpWhenTheHostEndsAndFinishedWhenTheInputsDo) {
    writeDataRegistry(gate());
    HostProcess stopped(directoryM.path(), {"run", "r.yaml"});
    drop("cmd/a.yaml", std::string(one) + ": {Reload: ''}\n");
    drop("cmd/b.yaml", std::string(pool) + ": {Reload: ''}\n");
    ASSERT_TRUE(waitForText("trace", "One at gate") && waitForFile("cmd/b.taken"));
    stopped.signal(SIGTERM);
    EXPECT_EQ(stopped.wait(), 0);
    EXPECT_THAT(directoryM.read("cmd/a.result"), HasSubstr("ERR_RELOAD_GIVEN_UP"));
    EXPECT_THAT(directoryM.read("cmd/b.result"), HasSubstr("ERR_RELOAD_GIVEN_UP"));

    directoryM.write("edrs.jsonl", edrs(1));
    writeDataRegistry(gate(), "{Files: [edrs.jsonl]}");
    drop("cmd/c.yaml", std::string(one) + ": {Reload: ''}\n");
    openGate(2);
    HostProcess ended(directoryM.path(),
                      {"run", "r.yaml", "--at-end", std::string(pool) + " Reload"});
    EXPECT_EQ(ended.wait(), 0);
    EXPECT_THAT(directoryM.read("cmd/c.result"), HasSubstr("Loaded 2 rows"));
    EXPECT_THAT(directoryM.read("out"), HasSubstr("Reloaded together. One: Loaded 2 rows"));
}
