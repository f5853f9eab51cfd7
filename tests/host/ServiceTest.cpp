// Service mode as operators see it: input and command directories, signals, restarts.
#include "ServiceFixture.h"

#include <pty.h>
#include <simdjson.h>
#include <sys/ioctl.h>

#include <sstream>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class Service : public ServiceFixture {};

TEST_F(Service, TakesCompleteFilesInOrderOfNameAndKeepsThem) {
    for (auto const* const name : {"b.jsonl", "a.jsonl", ".hidden", "c.tmp", "c.part"}) {
        drop(std::string("in/") + name,
             name == std::string("b.jsonl") ? "bad\n" + edrs(1) : edrs(2));
    }
    HostProcess host(directoryM.path(), {"run", "r.yaml"});
    ASSERT_TRUE(waitForFile("in/done/b.jsonl"));
    drop("in/a.jsonl", edrs(3)); // has the name of one that is done
    ASSERT_TRUE(waitForFile("in/done/a.jsonl.2"));
    host.signal(SIGTERM);
    EXPECT_EQ(host.wait(), 0); // although a line was rejected

    EXPECT_THAT(names("in"), ElementsAre(".hidden", "c.part", "c.tmp", "done"));
    EXPECT_THAT(names("in/done"), ElementsAre("a.jsonl", "a.jsonl.2", "b.jsonl", "b.jsonl.reject"));
    EXPECT_EQ(directoryM.read("in/done/b.jsonl.reject"), "bad\n");
    auto const log = directoryM.read("err");
    EXPECT_LT(log.find("/in/a.jsonl'"), log.find("/in/b.jsonl'"));
    EXPECT_THAT(log, HasSubstr("read: 6, details: 6, rejected: 1, failed inputs: 0, batches: 4"));
    EXPECT_THAT(directoryM.read("trace"), HasSubstr("F shutdown\n"));
}

TEST_F(Service, GoesOnBehindTheLastFinishedBatch) {
    // Lines 3 and 12 aren't EDRs.
    auto const text = edrs(2) + "bad 3\n" + edrs(8) + "bad 12\n" + edrs(1);
    struct {
        int signal;
        int exitCode;
        std::size_t finishedBatches; // before the restart
    } const cases[] = {{SIGTERM, 0, 3}, {SIGINT, 0, 3}, {SIGKILL, -SIGKILL, 2}};
    for (auto const& each : cases) {
        SCOPED_TRACE(each.signal);
        directoryM.write("trace", "");
        writeRegistry("{Directory: in}", gate());
        drop("in/x.jsonl", text);
        {
            HostProcess host(directoryM.path(), {"run", "r.yaml"});
            openGate(2);
            ASSERT_TRUE(waitForText("trace", "at gate", 3)); // the third batch has begun
            host.signal(each.signal);
            if (each.signal != SIGKILL) {
                ASSERT_TRUE(waitForText("err", "MSG_STOPPING"));
                openGate(1);
            }
            EXPECT_EQ(host.wait(), each.exitCode);
        }
        EXPECT_EQ(count(directoryM.read("trace"), "batch of 2\n"), each.finishedBatches);
        drop("in/a.jsonl", edrs(1)); // comes after the interrupted file
        writeRegistry("{Directory: in}");
        HostProcess host(directoryM.path(), {"run", "r.yaml"});
        ASSERT_TRUE(waitForFile("in/done/a.jsonl"));
        host.signal(SIGTERM);
        EXPECT_EQ(host.wait(), 0);
        auto const trace = directoryM.read("trace");
        EXPECT_EQ(count(trace, "batch of 2\n"), 5U);
        EXPECT_EQ(count(trace, "batch of 1\n"), 2U);
        EXPECT_THAT(directoryM.read("err"), HasSubstr("/in/x.jsonl:12"));
        EXPECT_EQ(directoryM.read("in/done/x.jsonl.reject"), "bad 3\nbad 12\n");
        std::filesystem::remove_all(pathOf("in/done"));
    }
}

// A state that is damaged, or isn't of the file, is none: the file is read from its beginning.
TEST_F(Service, BeginsAFileAnewWithoutASoundStateOfIt) {
    writeRegistry("{Directory: in}", gate());
    drop("in/x.jsonl", edrs(4));
    {
        HostProcess host(directoryM.path(), {"run", "r.yaml"});
        openGate(1);
        ASSERT_TRUE(waitForText("trace", "at gate", 2)); // the second batch has begun
        host.signal(SIGKILL);
        host.wait();
    }
    writeRegistry("{Directory: in}");
    auto const good = directoryM.read("in/done/.state");
    auto const changed = [&](std::size_t at, char byte) {
        auto state = good;
        state.at(at) = byte;
        return state;
    };
    auto const name = good.find("x.jsonl/");
    ASSERT_LT(name, good.size());
    struct {
        std::string state;
        std::size_t batches;
        std::time_t modified = 0; // the input, since
    } const cases[] = {
        {good, 1},
        {"", 2},
        {std::string(good.size(), '\0'), 2},
        {std::string(5000, '\xff'), 2},
        {good.substr(0, name), 2},
        {"-" + good, 2},
        {"9" + good, 2},
        {changed(0, '1'), 2}, // the position within the file
        {changed(name - 3, 'x'), 2},
        {changed(name, 'y'), 2},
        {changed(name + 9, 'y'), 2}, // the name when it is done
        {good, 2, 1},
    };
    for (auto const& each : cases) {
        SCOPED_TRACE(each.state.substr(0, 100));
        directoryM.write("trace", "");
        directoryM.write("in/done/.state", each.state);
        if (each.modified != 0) {
            timespec const times[] = {{each.modified, 0}, {each.modified, 0}};
            ASSERT_EQ(::utimensat(AT_FDCWD, pathOf("in/x.jsonl").c_str(), times, 0), 0);
        }
        HostProcess host(directoryM.path(), {"run", "r.yaml"});
        ASSERT_TRUE(waitForFile("in/done/x.jsonl"));
        host.signal(SIGTERM);
        EXPECT_EQ(host.wait(), 0);
        EXPECT_EQ(count(directoryM.read("trace"), "batch of 2\n"), each.batches);
        EXPECT_EQ(count(directoryM.read("err"), "ERR_INPUT_CHANGED"), each.modified != 0);
        std::filesystem::rename(pathOf("in/done/x.jsonl"), pathOf("in/x.jsonl"));
    }
}

TEST_F(Service, SurvivesFilesThatVanishOrCantBeRead) {
    writeRegistry("{Directory: in}", gate());
    drop("in/a.jsonl", edrs(2));
    drop("in/b.jsonl", edrs(2));
    drop("in/c.gz", "this is not compressed");
    drop("in/d.jsonl", edrs(2));
    HostProcess host(directoryM.path(), {"run", "r.yaml"});
    ASSERT_TRUE(waitForText("trace", "at gate"));
    std::filesystem::remove(pathOf("in/a.jsonl")); // while it is read
    std::filesystem::remove(pathOf("in/b.jsonl")); // while it waits
    openGate(2);
    ASSERT_TRUE(waitForFile("in/done/d.jsonl"));
    host.signal(SIGINT);
    EXPECT_EQ(host.wait(), 0);
    EXPECT_THAT(names("in/done"), ElementsAre("c.gz.failed", "d.jsonl"));
    auto const log = directoryM.read("err");
    EXPECT_EQ(count(log, "/in/a.jsonl' vanished"), 1U);
    EXPECT_EQ(count(log, "/in/b.jsonl' can't be read: No such file"), 1U);
    EXPECT_EQ(count(log, "/in/c.gz' can't be read: expected gzip data"), 1U);
    EXPECT_THAT(log, HasSubstr("read: 4, details: 4, rejected: 0, failed inputs: 3, batches: 2"));
}

TEST_F(Service, LogsAnUnknownFieldOnceInAllFiles) {
    for (auto const* const name : {"in/a", "in/b", "in/c"}) {
        drop(name, "{\"Q\":1}\nbad\n{\"R" + std::string(name + 3) + "\":1,\"Q\":2}\n");
    }
    HostProcess host(directoryM.path(), {"run", "r.yaml"});
    ASSERT_TRUE(waitForFile("in/done/c"));
    host.signal(SIGTERM);
    EXPECT_EQ(host.wait(), 0);
    auto const log = directoryM.read("err");
    for (auto const* const field : {"DETAIL.Q'", "DETAIL.Ra'", "DETAIL.Rb'", "DETAIL.Rc'"}) {
        EXPECT_EQ(count(log, std::string("no field '") + field), 1U) << log;
    }
}

TEST_F(Service, ReadsAFileThatTookThePlaceOfTheOneItReads) {
    writeRegistry("{Directory: in}", gate());
    drop("in/a.jsonl", edrs(2));
    HostProcess host(directoryM.path(), {"run", "r.yaml"});
    ASSERT_TRUE(waitForText("trace", "at gate"));
    drop("in/a.jsonl", edrs(4));
    openGate(3);
    ASSERT_TRUE(waitForFile("in/done/a.jsonl"));
    host.signal(SIGINT);
    EXPECT_EQ(host.wait(), 0);
    EXPECT_EQ(directoryM.read("in/done/a.jsonl"), edrs(4));
    EXPECT_THAT(names("in/done"), ElementsAre("a.jsonl"));
    auto const log = directoryM.read("err");
    EXPECT_EQ(count(log, "ERR_INPUT_REPLACED"), 1U);
    EXPECT_THAT(log, HasSubstr("read: 6, details: 6, rejected: 0, failed inputs: 1, batches: 3"));
}

TEST_F(Service, EndsWhileStandardInputIsSilent) {
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    writeRegistry("{Files: [\"-\"]}");
    HostProcess host(directoryM.path(),
                     {"run", "r.yaml", "--quiet", "--at-end", std::string(object) + " Count"},
                     ends[0]);
    ASSERT_EQ(::write(ends[1], "{\"A\":\"1\"}\n{\"A\":\"2\"}\n{\"A\":\"3\"}\n", 30), 30);
    ASSERT_TRUE(waitForText("trace", "batch of 2"));
    host.signal(SIGINT);
    EXPECT_EQ(host.wait(), 0);
    EXPECT_THAT(directoryM.read("out"), HasSubstr("Count: handled, work done"));
    EXPECT_THAT(directoryM.read("trace"), HasSubstr("update after 3\n"));
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST_F(Service, EndsAtOnceWithTheSecondSignal) {
    writeRegistry("{Directory: in}", gate());
    drop("in/a.jsonl", edrs(2));
    HostProcess host(directoryM.path(), {"run", "r.yaml"});
    ASSERT_TRUE(waitForText("trace", "at gate"));
    host.signal(SIGTERM);
    ASSERT_TRUE(waitForText("err", "MSG_STOPPING"));
    host.signal(SIGTERM);
    EXPECT_EQ(host.wait(), 130);
}

TEST_F(Service, StartsOnlyWithDirectoriesOfItsOwn) {
    HostProcess first(directoryM.path(), {"run", "r.yaml", "--log-level", "warning"});
    drop("in/a.jsonl", edrs(1));
    ASSERT_TRUE(waitForFile("in/done/a.jsonl"));
    auto const rerun = [&] { return HostProcess(directoryM.path(), {"run", "r.yaml"}).wait(); };
    EXPECT_EQ(rerun(), 3);
    EXPECT_EQ(count(directoryM.read("err"), "is in use by another host"), 2U);
    EXPECT_EQ(count(directoryM.read("err"), "MSG_STARTED"), 0U);
    EXPECT_EQ(HostProcess(directoryM.path(), {"check", "r.yaml"}).wait(), 0);
    first.signal(SIGTERM);
    EXPECT_EQ(first.wait(), 0);

    for (auto const mode : {0720U, 0702U, 0777U}) {
        std::filesystem::permissions(pathOf("cmd"), std::filesystem::perms(mode));
        EXPECT_EQ(rerun(), 3) << mode;
        EXPECT_THAT(directoryM.read("err"), HasSubstr("/cmd' can't be used for commands: it must"));
    }
    std::filesystem::remove_all(pathOf("cmd"));
    EXPECT_EQ(rerun(), 3);
    EXPECT_THAT(directoryM.read("err"), HasSubstr("/cmd' can't be used: No such file"));
}

// Also when others are there at once, which the host neither watches nor has locked.
TEST_F(Service, DoesntGoOnInSilenceWithoutItsDirectories) {
    auto const text = directoryM.read("r.yaml");
    directoryM.write("r.yaml", "host:\n  Status: {File: status}\n" + text.substr(6));
    auto const replace = [&](char const* directory) {
        std::filesystem::remove_all(pathOf(directory));
        std::filesystem::create_directory(pathOf(directory));
    };
    HostProcess host(directoryM.path(), {"run", "r.yaml"});
    ASSERT_TRUE(waitForText("err", "MSG_STARTED"));
    replace("cmd");
    ASSERT_TRUE(waitForText("err", "ERR_COMMANDS_STOPPED"));
    replace("in");
    ASSERT_TRUE(waitForText("err", "ERR_PIPELINE_FAILED"));
    EXPECT_EQ(host.wait(), 4);
    for (auto const* const directory : {"cmd", "in"}) {
        EXPECT_THAT(directoryM.read("err"),
                    HasSubstr(std::string("/") + directory + "' can't be used: No such file"));
    }
}

TEST_F(Service, AnswersEveryCommandFile) {
    struct {
        std::string text;
        std::vector<std::string> result; // parts of it
    } const cases[] = {
        {std::string(object) + ": {Count: x, Write: " + pathOf("written").string() + "}\n" +
             object + "x: {Count: }\n",
         {"Command: \"10.yaml\"\nHandled: false\nFaultless: false\nResults:\n  - Object: \"" +
              std::string(object) + "\"\n    Keys: {\"Count\": \"x\", \"Write\": \"" +
              pathOf("written").string() +
              "\"}\n    Verdict: \"handled\"\n    WorkDone: true\n    Files: [{\"Key\": \"Write\", "
              "\"Path\": \"" +
              pathOf("written").string() +
              "\", \"Opened\": true, \"Size\": 8, \"Complete\": \"unknown\"}]\n    Time: \"20",
          "  - Object: \"" + std::string(object) + "x\"\n    Keys: {\"Count\": \"\"}\n" +
              "    Verdict: \"not handled\"\n    Reason: \"unknown object (did you mean "
              "'" +
              object + "'?)\"\n"}},
        {std::string(object) + ": {Write: relative, Wirte: x}\n",
         {"Handled: true\n", "    WorkDone: false\n    Ignored: [\"Wirte\"]\n",
          "\"Path\": \"" + pathOf("relative").string() +
              "\", \"Opened\": true, \"Size\": 8, \"Complete\": \"unknown\"}"}},
        {std::string(object) + ": {Write: " + pathOf("written").string() + "}\n",
         {"\"Opened\": true, \"Size\": 8, \"Complete\": \"unknown\"}"}}, // although it is written a
                                                                         // second time
        {std::string(object) + ": {Write: /missing/x}\n",
         {"Handled: true\n", "\"Path\": \"/missing/x\", \"Opened\": false, \"Complete\": "
                             "\"unknown\", \"Reason\": \"the "
                             "directory '/missing' doesn't exist\"}"}},
        {std::string(object) + ": {Count: " + pathOf("written").string() + "}\n",
         {"\"Opened\": false, \"Complete\": \"unknown\", \"Reason\": \"nothing opened it for "
          "writing\"}"}},
        {std::string(object) + ": {Refuse: \"a\\tb\"}\n",
         {"Handled: false\n", "Keys: {\"Refuse\": \"a\\u0009b\"}\n    Verdict: \"rejected\"",
          "Status: {\"Message\": \"ERR_REG_VALUE_INVALID\", \"Level\": \"error\", \"Text\": "
          "\"The "}},
        {std::string(object) + ": {Refuse: again}\n",
         {"Status: {\"Message\": \"ERR_REG_VALUE_INVALID\""}},
        {"host.Pipelines.P: {A: b}\n", {"Verdict: \"rejected\""}},
        {"a: {b: c\n",
         {"Handled: false\nFaultless: false\nProblems:\n  - \"18.yaml:", "not valid YAML: "}},
        {"", {"Problems:\n  - \"19.yaml:1:1: the file is empty\""}},
        {"a: {}\nb: {c: [d], e: f, e: g}\n",
         {"  - \"20.yaml:1:1: 'a' must be a mapping with the keys of the command\"\n"
          "  - \"20.yaml:2:5: 'c' must be a text, not a sequence\"\n"
          "  - \"20.yaml:2:19: the key 'e' is given twice, first on line 2\"\n"}},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        drop("cmd/" + std::to_string(10 + i) + ".yaml", cases[i].text);
    }
    drop("cmd/" + std::string(250, 'n') + ".yaml", "there is no room for its result's name");
    drop("cmd/left.taken", "an earlier host was killed in its middle");
    HostProcess host(directoryM.path(), {"run", "r.yaml"});
    ASSERT_TRUE(waitForFile("cmd/20.result"));
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        for (auto const& part : cases[i].result) {
            EXPECT_THAT(directoryM.read("cmd/" + std::to_string(10 + i) + ".result"),
                        HasSubstr(part));
        }
    }
    EXPECT_THAT(directoryM.read("cmd/left.result"), HasSubstr("its outcome is unknown"));
    host.signal(SIGTERM);
    EXPECT_EQ(host.wait(), 0);
    EXPECT_EQ(names("cmd").size(), std::size(cases) + 2); // the results and the name too long
    EXPECT_THAT(directoryM.read("err"), HasSubstr("its name is too long, expected at most 243"));
    EXPECT_THAT(directoryM.read("err"), HasSubstr("commands: 9"));
}

TEST_F(Service, CarriesOutABurstOfCommandsInOrderWhileBatchesGoOn) {
    constexpr int burst = 1000;
    HostProcess host(directoryM.path(), {"run", "r.yaml", "--log-level", "warning"});
    drop("in/x.jsonl", edrs(200'000));
    ASSERT_TRUE(waitForText("trace", "batch"));
    for (int i = 0; i < burst; ++i) {
        auto const number = std::to_string(10'000 + i);
        drop("cmd/" + number + ".yaml", std::string(object) + ": {Number: " + number + "}\n");
    }
    ASSERT_TRUE(waitForFile("cmd/" + std::to_string(10'000 + burst - 1) + ".result"));
    host.signal(SIGTERM);
    EXPECT_EQ(host.wait(), 0);
    EXPECT_EQ(names("cmd").size(), static_cast<std::size_t>(burst));
    std::istringstream trace(directoryM.read("trace"));
    int next = 10'000;
    int batchesBetween = 0;
    for (std::string line; std::getline(trace, line);) {
        if (line.starts_with("F number ")) {
            EXPECT_EQ(line, "F number " + std::to_string(next++));
        }
        bool const isBetween = next > 10'000 && next < 10'000 + burst;
        batchesBetween += isBetween && line.starts_with("F batch ") ? 1 : 0;
    }
    EXPECT_EQ(next, 10'000 + burst);
    // They take turns; a batch may miss some while its EDRs are read.
    EXPECT_GT(batchesBetween, burst / 4);
}

TEST_F(Service, ChecksEverything) {
    directoryM.write(
        "r.yaml", "host:\n  Commands: {Directory: nowhere}\n  Logs: x\n"
                  "  Log: {Process: nodir/log}\n  Metrics: {File: out/m}\n"
                  "  Status: {File: in}\n  DataPool:\n"
                  "    D: {ModuleName: TestMissing}\n  Pipelines:\n"
                  "    P: {EdrDescription: bad.yaml, Input: {Directory: no}, Log: ., Functions: }\n"
                  "    Q:\n      EdrDescription: edr.yaml\n      Input: {Files: [x]}\n"
                  "      Functions:\n        F: {ModuleName: TestCounter}\n"
                  "        G: {ModuleName: TestCounter, Module: {Fail: build}}\n"
                  "        H: {ModuleName: TestCounter, Module: {Fail: install}}\n"
                  "        I: {ModuleName: TestCounter, Module: {Throw: startup}}\n");
    directoryM.write("bad.yaml", "DETAIL: {A: string}\n");
    EXPECT_EQ(HostProcess(directoryM.path(), {"check", "r.yaml"}).wait(), 3);
    auto const problems = directoryM.read("err");
    for (auto const* const part :
         {"r.yaml:3:3: unknown key 'Logs' (did you mean 'Log'?)", "/nowhere' can't be used",
          "/nodir/log' can't be written: the directory '", "P ERR_FILE_NOT_WRITABLE",
          "/out/m' can't be written: the directory '", "/in' can't be written: it is a directory",
          "/no' can't be used", "ERR_LIBRARY_NOT_FOUND",
          "/bad.yaml:1:13: the field 'A' has the unknown type",
          "Functions.G.Module ERR_MODULE_NOT_USABLE", "Functions.H.Module ERR_LIFE_CYCLE",
          "Functions.I.Module ERR_LIFE_CYCLE"}) {
        EXPECT_EQ(count(problems, part), 1U) << part << " in\n" << problems;
    }
    EXPECT_EQ(directoryM.read("out"), "r.yaml: 12 problems found, 1 warning\n");
}

TEST_F(Service, SummarisesForPeopleAndPrograms) {
    directoryM.write("x.jsonl", edrs(3) + "bad\n");
    writeRegistry("{Files: [x.jsonl]}");
    EXPECT_EQ(HostProcess(directoryM.path(), {"run", "r.yaml"}).wait(), 1);
    EXPECT_THAT(directoryM.read("out"),
                testing::MatchesRegex("Pipeline  Read  Details  Rejected  Failed inputs  Batches  "
                                      "Faults  Seconds  +EDRs/s  Commands\n"
                                      "P            3        3         1              0        2  "
                                      "     0 +[0-9.]+ +[0-9]+         0\n"));
    EXPECT_EQ(HostProcess(directoryM.path(), {"run", "r.yaml", "--json", "--log-level", "error",
                                              "--at-end", std::string(object) + " Write=\"new\""})
                  .wait(),
              1);
    EXPECT_EQ(directoryM.read("err"), "");
    simdjson::dom::parser parser;
    simdjson::dom::element summary = parser.parse(directoryM.read("out"));
    EXPECT_EQ(summary.at_pointer("/Pipelines/0/Rejected").get_uint64().value(), 1U);
    EXPECT_EQ(summary.at_pointer("/Pipelines/0/Commands").get_uint64().value(), 1U);
    EXPECT_EQ(summary.at_pointer("/Commands/0/Files/0/Path").get_string().value(),
              pathOf("new").string());
}

TEST_F(Service, ShowsItsProgressOnATerminalOnly) {
    writeRegistry("{Files: [x.jsonl]}", gate());
    directoryM.write("x.jsonl", edrs(4));
    int master = -1;
    int terminal = -1;
    ASSERT_EQ(::openpty(&master, &terminal, nullptr, nullptr, nullptr), 0);
    HostProcess host(directoryM.path(), {"run", "r.yaml"}, -1, terminal);
    openGate(1);
    std::string shown;
    auto const waitFor = [&](char const* text) {
        while (shown.find(text) == std::string::npos) {
            char buffer[512];
            auto const count = ::read(master, buffer, sizeof buffer);
            ASSERT_GT(count, 0);
            shown.append(buffer, static_cast<std::size_t>(count));
        }
    };
    waitFor("2 EDRs, ");
    EXPECT_THAT(shown, testing::ContainsRegex("2 EDRs, [0-9]+ EDRs/s, 100 % done, 0 rejected"));
    winsize const narrow = {24, 12, 0, 0};
    ASSERT_EQ(::ioctl(master, TIOCSWINSZ, &narrow), 0);
    waitFor("\x1b[K2 EDRs, 0 E\r"); // cut, so that it can be erased
    openGate(1);
    EXPECT_EQ(host.wait(), 0);
    ::close(terminal);
    ::close(master);
}

} // namespace
