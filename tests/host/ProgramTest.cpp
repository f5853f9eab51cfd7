// Runs the real program as an operator does.
#include "HostProcess.h"
#include "support/TemporaryDirectory.h"

#include <gmock/gmock.h>

#include <sys/wait.h>

#include <cstdlib>

namespace {

using testing::HasSubstr;

struct Outcome {
    int exitCode;
    std::string out;
    std::string err;
};

class Program : public testing::Test {
protected:
    Program() {
        directoryM.write("edr.yaml", "DETAIL: {A: text}\n");
        directoryM.write("two.jsonl", "{\"A\":\"1\"}\n{\"A\":\"2\"}\n");
        directoryM.write("five.jsonl", "{\"RECORD\":\"HEADER\"}\n{\"A\":\"1\"}\n{\"A\":\"2\"}\n"
                                       "{\"A\":\"3\"}\n{\"A\":\"4\"}\n");
    }

    Outcome program(std::string const& arguments, std::string const& standardInput = {}) {
        auto const in = directoryM.write("stdin", standardInput);
        auto const quoted = [](std::string const& text) { return " '" + text + "'"; };
        auto const command = "cd" + quoted(directoryM.path().string()) +
                             " && PIPELINE_HOST_MODULE_PATH=/missing:'" HOST_TEST_MODULES "'" +
                             quoted(HOST_PROGRAM) + " " + arguments + " <" + quoted(in) +
                             " >out 2>err";
        int const status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, directoryM.read("out"),
                directoryM.read("err")};
    }

    // A pipeline with one function F.
    static std::string pipeline(std::string const& name, std::string const& files,
                                std::string const& function = "ModuleName: TestCounter",
                                std::string const& rest = {}) {
        return "    " + name + ":\n      EdrDescription: edr.yaml\n      BatchSize: 2\n" +
               "      Input: {Files: [" + files + "]}\n" + rest + "      Functions:\n" +
               "        F: {" + function + "}\n";
    }

    static std::string counter(std::string const& keys) {
        return "ModuleName: TestCounter, Module: {Trace: trace" +
               (keys.empty() ? keys : ", " + keys) + "}";
    }

    void writeRegistry(std::string const& pipelines, std::string const& dataPool = {},
                       std::string const& rest = {}) {
        directoryM.write("r.yaml", "host:\n" + rest + "  DataPool:\n" + dataPool +
                                       "  Pipelines:\n" + pipelines);
    }

    support::TemporaryDirectory directoryM;
};

TEST_F(Program, TellsWhatItWasAskedWrongly) {
    struct {
        char const* arguments;
        int exitCode;
    } const cases[] = {
        {"--help", 0},
        {"", 2},
        {"walk r.yaml", 2},
        {"run", 2},
        {"run r.yaml --at-end 'o'", 2},
        {"check r.yaml --at-end 'o A'", 2},
        {"run missing.yaml", 3},
        {"run .", 3},
    };
    for (auto const& each : cases) {
        auto const outcome = program(each.arguments);
        EXPECT_EQ(outcome.exitCode, each.exitCode) << each.arguments;
        EXPECT_EQ(outcome.err.empty(), each.exitCode == 0) << each.arguments;
        EXPECT_EQ(outcome.out.empty(), each.exitCode != 0) << each.arguments;
    }
}

TEST_F(Program, DoesntStartWithAModuleThatCantBeUsed) {
    struct {
        std::string function; // of the pipeline
        std::string data;     // of the data pool
        std::vector<std::string> messages;
    } const cases[] = {
        {"ModuleName: TestMissing",
         "",
         {"ERR_LIBRARY_NOT_FOUND The library of the module 'TestMissing' wasn't found. Tried: "
          "/missing/TestMissing.so, " HOST_TEST_MODULES "/TestMissing.so, "}},
        {"ModuleName: TestCounter, Library: own/x.so", "", {"ERR_LIBRARY_NOT_FOUND", "/own/x.so"}},
        {"ModuleName: TestNoLibrary", "", {"ERR_LIBRARY_NOT_LOADED", "file too short"}},
        {"ModuleName: TestWithoutEntry",
         "",
         {"/TestWithoutEntry.so' has no entry 'TestWithoutEntryModuleStart'."}},
        {counter("Fail: build"),
         "",
         {"ERR_REG_ENTRY_NOT_FOUND The mandatory registry key 'SomeKey' is missing.\n",
          "ERR_MODULE_NOT_USABLE The module 'TestCounter' isn't usable: ERR_REG_ENTRY_NOT_FOUND: "
          "The mandatory registry key 'SomeKey' is missing.\n"}},
        {"ModuleName: TestData",
         "",
         {"ERR_MODULE_KIND_WRONG The module 'TestData' is of the wrong kind: expected a function "
          "plug-in, got a data module.\n"}},
        {counter("Fail: install"),
         "",
         {"ERR_LIFE_CYCLE The operation 'install' failed: no status"}},
        {counter(""),
         "    Nothing: {ModuleName: TestData}\n    Wrong: {ModuleName: TestCounter}\n",
         {"host.DataPool.Nothing.Module ERR_MODULE_ENTRY_FAILED", "failed: it returned no object",
          "host.DataPool.Wrong.Module ERR_MODULE_KIND_WRONG", "expected a data module, got a "}},
    };
    for (auto const& each : cases) {
        writeRegistry(pipeline("P", "two.jsonl", each.function), each.data);
        for (auto const* const verb : {"run r.yaml", "check r.yaml"}) {
            auto const outcome = program(verb);
            EXPECT_EQ(outcome.exitCode, 3) << each.function;
            EXPECT_EQ(outcome.out.empty(), std::string(verb).starts_with("run"));
            for (auto const& message : each.messages) {
                EXPECT_EQ(count(outcome.err, message), 1U) << message << " in\n" << outcome.err;
            }
        }
        EXPECT_EQ(directoryM.read("trace").find("batch"), std::string::npos) << each.function;
    }
}

TEST_F(Program, ReportsAFailedStartInTheLogAndToItsCaller) {
    writeRegistry(pipeline("P", "two.jsonl", "ModuleName: TestMissing"), "",
                  "  Log: {Process: process.log}\n");
    auto const outcome = program("run r.yaml");
    EXPECT_EQ(outcome.exitCode, 3);
    EXPECT_THAT(outcome.err, HasSubstr("ERR_LIBRARY_NOT_FOUND"));
    EXPECT_THAT(directoryM.read("process.log"), HasSubstr("ERR_LIBRARY_NOT_FOUND"));

    directoryM.write("edr.yaml", "DETAIL: {A: string}\n");
    EXPECT_THAT(program("run r.yaml").err, HasSubstr("/edr.yaml:1:13: the field 'A'"));
}

TEST_F(Program, TakesModulesThroughTheirLifeInOrder) {
    writeRegistry(pipeline("P", "five.jsonl", counter("")) + "        G: {" + counter("") + "}\n",
                  "    D: {ModuleName: TestData, Module: {Trace: trace}}\n");
    ASSERT_EQ(program("run r.yaml").exitCode, 0);
    EXPECT_EQ(directoryM.read("trace"),
              "D build\nF build\nG build\n"
              "F init\nG init\nF finalInit\nG finalInit\nF install\nG install\n"
              "D startup\nF startup\nG startup\n"
              "F isActive\nF batch of 2\nG isActive\nG batch of 2\n"
              "F isActive\nF batch of 2\nG isActive\nG batch of 2\n"
              "F isActive\nF batch of 1\nG isActive\nG batch of 1\n"
              "G shutdown\nF shutdown\nD shutdown\nG uninstall\nF uninstall\n"
              "G destroy\nF destroy\nD destroy\n");
}

TEST_F(Program, PassesInactivePlugInsBy) {
    writeRegistry(pipeline("P", "two.jsonl", counter("Fail: isActive")));
    EXPECT_EQ(program("run r.yaml").exitCode, 0);
    EXPECT_EQ(count(directoryM.read("trace"), "isActive"), 1U);
    EXPECT_EQ(count(directoryM.read("trace"), "batch"), 0U);
}

TEST_F(Program, RunsPipelinesByThemselvesAndCommandsAtTheEnd) {
    auto const traced = [](std::string const& name) {
        return "ModuleName: TestCounter, Module: {Trace: " + name + "}";
    };
    writeRegistry(pipeline("One", "two.jsonl, five.jsonl", traced("one")) +
                      pipeline("Two", "two.jsonl", traced("two"), "      Log: two.log\n"),
                  "    D: {ModuleName: TestData}\n", "  Log: {Process: process.log}\n");
    auto const outcome =
        program("run r.yaml --quiet"
                " --at-end 'host.Pipelines.One.Functions.F.Module Count'"
                " --at-end 'host.Pipelines.Two.Functions.F.Module Other=\"a b\" C'");
    EXPECT_EQ(outcome.exitCode, 1); // keys were ignored
    EXPECT_EQ(outcome.err, "");
    EXPECT_THAT(directoryM.read("one"), HasSubstr("F update after 7\n"));
    EXPECT_THAT(directoryM.read("two"), HasSubstr("F update after 2\n"));
    EXPECT_THAT(outcome.out, testing::MatchesRegex(
                                 "host.Pipelines.One.Functions.F.Module Count: handled, work done, "
                                 "[0-9.]+ s\n"
                                 "host.Pipelines.Two.Functions.F.Module Other=a b C: handled, no "
                                 "work done, ignored Other C, [0-9.]+ s\n"));
    auto const log = directoryM.read("process.log");
    EXPECT_THAT(
        log,
        HasSubstr(" notice One host.Pipelines.One MSG_PIPELINE_SUMMARY EDRs read: 7, details: 6, "
                  "rejected: 0, failed inputs: 0, batches: 4, "));
    EXPECT_THAT(
        log,
        HasSubstr(" notice Two host.Pipelines.Two MSG_PIPELINE_SUMMARY EDRs read: 2, details: 2, "
                  "rejected: 0, failed inputs: 0, batches: 1, "));
    EXPECT_THAT(directoryM.read("two.log"), HasSubstr("MSG_INPUT_STARTED"));
}

TEST_F(Program, TellsWhatBecameOfEachCommand) {
    struct {
        char const* command;
        char const* result; // its beginning
        char const* keys;   // of the plug-in
    } const cases[] = {
        {"host.Pipelines.P.Functions.F.Module Refuse=x",
         ": rejected, no work done, status ERR_REG_VALUE_INVALID: The registry value 'Refuse' is ",
         ""},
        {"host.Pipelines.Q.Functions.F.Module Count",
         ": not handled, unknown object (did you mean "
         "'host.Pipelines.P.Functions.F.Module'?), "
         "no work done, ",
         ""},
        {"host.Pipelines.P Count", ": rejected, no work done, ", ""},
    };
    for (auto const& each : cases) {
        writeRegistry(pipeline("P", "two.jsonl", counter(each.keys)));
        auto const outcome = program(std::string("run r.yaml --at-end '") + each.command + "'");
        EXPECT_EQ(outcome.exitCode, 1) << each.command;
        EXPECT_THAT(outcome.out, testing::StartsWith(std::string(each.command) + each.result));
        EXPECT_THAT(outcome.err, HasSubstr(" ERR_COMMAND_REJECTED "));
    }
}

TEST_F(Program, SurvivesWhateverAPlugInThrowsAndLosesNothing) {
    std::string const entry = "ERR_MODULE_ENTRY_FAILED The entry 'TestCounterModuleStart' of the "
                              "library '" HOST_TEST_MODULES "/TestCounter.so' failed: ";
    std::string const batch = "ERR_BATCH_FAILED The plug-in threw while it processed a batch: ";
    std::string const operation = "ERR_LIFE_CYCLE The operation '";
    std::string const object = "host.Pipelines.P.Functions.F.Module";
    struct {
        std::string place;
        int exitCode;
        std::string told;
        std::size_t times;
    } const places[] = {
        {"entry", 3, entry, 1},
        {"build", 3, entry, 1},
        {"isUsable", 3, "ERR_MODULE_NOT_USABLE The module 'TestCounter' isn't usable: ", 1},
        {"init", 3, operation + "init' failed: ", 1},
        {"finalInit", 3, operation + "finalInit' failed: ", 1},
        {"install", 3, operation + "install' failed: ", 1},
        {"startup", 3, operation + "startup' failed: ", 1},
        {"isActive", 1, batch, 3},
        {"batch", 1, batch, 3},
        {"batch 1", 1, batch, 1},
        {"batch 3", 1, batch, 1},
        {"record 1", 1, batch, 1},
        {"record 2", 1, batch, 1},
        {"record 3", 1, batch, 2},
        {"update", 1,
         "ERR_COMMAND_REJECTED " + object + " Count: not handled, the object threw: ", 1},
        {"shutdown", 0, operation + "shutdown' failed: ", 1},
        {"uninstall", 0, operation + "uninstall' failed: ", 1},
    };
    struct {
        char const* what;
        std::string text;
    } const exceptions[] = {{"error", "thrown in "},
                            {"status", "ERR_DATABASE: Database error: thrown"},
                            {"number", "an exception of an unknown type"},
                            {"memory", "std::bad_alloc"}};
    directoryM.write("kinds.jsonl", "{\"RECORD\":\"HEADER\"}\n{\"A\":\"1\"}\n{\"A\":\"2\"}\n"
                                    "{\"A\":\"3\"}\n{\"RECORD\":\"TRAILER\"}\n");
    for (auto const& place : places) {
        for (auto const& exception : exceptions) {
            SCOPED_TRACE(place.place + " " + exception.what);
            directoryM.write("trace", "");
            writeRegistry(
                pipeline("P", "kinds.jsonl",
                         counter("Throw: " + place.place + ", What: " + exception.what)) +
                "        G: {" + counter("") + "}\n" +
                pipeline("Q", "kinds.jsonl", "ModuleName: TestCounter, Module: {Trace: other}"));
            directoryM.write("other", "");
            auto const outcome =
                program("run r.yaml --at-end '" + object +
                        " Count' --at-end 'host.Pipelines.Q.Functions.F.Module Count'");
            EXPECT_EQ(outcome.exitCode, place.exitCode);
            EXPECT_EQ(
                count(outcome.err, " critical P " + object + " " + place.told + exception.text) +
                    count(outcome.err, " error P " + object + " " + place.told + exception.text),
                place.times)
                << outcome.err;
            auto const trace = directoryM.read("trace");
            bool const hasStarted = place.exitCode != 3;
            EXPECT_EQ(count(trace, "G batch of"), hasStarted ? 3U : 0U);
            EXPECT_EQ(count(trace, "G destroy"), count(trace, "G build"));
            EXPECT_EQ(count(trace, "G shutdown"), count(trace, "G startup"));
            EXPECT_EQ(count(trace, "F uninstall"),
                      hasStarted || place.place == "startup" ? 1U : 0U);
            EXPECT_EQ(count(directoryM.read("other"), "update after 5"), hasStarted ? 1U : 0U);
            EXPECT_EQ(
                count(outcome.err,
                      "EDRs read: 5, details: 3, rejected: 0, failed inputs: 0, batches: 3, "),
                hasStarted ? 2U : 0U);
        }
    }
}

TEST_F(Program, CountsRejectedLinesAndFailedInputs) {
    struct {
        char const* files;
        char const* standardInput;
        int exitCode;
        std::vector<char const*> messages;
    } const cases[] = {
        {"\"-\"", "{\"A\":\"1\"}\n{\"A\":\"2\"}", 0, {"read: 2"}},
        {"\"-\", two.jsonl",
         "nonsense\n{\"A\":\"1\"}\n",
         1,
         {" ERR_EDR_REJECTED -:1:1: ",
          "read: 3, details: 3, rejected: 1, failed inputs: 0, batches: 2"}},
        {"missing.jsonl, two.jsonl",
         "",
         4,
         {" critical P host.Pipelines.P ERR_FILE_NOT_READABLE ", "missing.jsonl", "read: 2"}},
        {"., two.jsonl", "", 4, {"Is a directory", "read: 2"}},
    };
    for (auto const& each : cases) {
        writeRegistry(pipeline("P", each.files));
        auto const outcome = program("run r.yaml", each.standardInput);
        EXPECT_EQ(outcome.exitCode, each.exitCode) << each.files;
        for (auto const* const message : each.messages) {
            EXPECT_THAT(outcome.err, HasSubstr(message)) << each.files;
        }
    }
    EXPECT_EQ(directoryM.read("stdin.reject"), "nonsense\n");
}

TEST_F(Program, FailsWhenWhatItWritesIsLost) {
    writeRegistry(pipeline("P", "two.jsonl"));
    for (std::string const command : {"run r.yaml --at-end 'host.Pipelines.P.Functions.F.Module A'",
                                      "check r.yaml", "generate --events 1 --customers 1"}) {
        EXPECT_EQ(program(command + " >/dev/full 2>err #").exitCode, 4) << command;
        EXPECT_THAT(directoryM.read("err"), HasSubstr("'standard output' can't be written"));
    }
    writeRegistry(pipeline("P", "two.jsonl", "ModuleName: TestCounter", "      Log: /dev/full\n"));
    EXPECT_EQ(program("run r.yaml").exitCode, 4);
    writeRegistry(pipeline("P", "two.jsonl"), "", "  Log: {Process: missing/process.log}\n");
    EXPECT_EQ(program("run r.yaml").exitCode, 3);

    // A reject file that can't be: the line isn't lost in silence.
    directoryM.write("bad.jsonl", "nonsense\n");
    std::filesystem::create_directories(directoryM.path() / "bad.jsonl.reject" / "x");
    writeRegistry(pipeline("P", "bad.jsonl"));
    auto const outcome = program("run r.yaml");
    EXPECT_EQ(outcome.exitCode, 4);
    EXPECT_THAT(outcome.err, HasSubstr("bad.jsonl.reject' can't be written"));
}

TEST_F(Program, ChecksWithoutRunning) {
    auto const logs = "  Log: {Process: process.log}\n";
    writeRegistry(pipeline("P", "two.jsonl", counter("")), "", logs);
    auto outcome = program("check r.yaml");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.out, "r.yaml: no problems found\n");
    EXPECT_EQ(count(directoryM.read("trace"), "batch"), 0U);

    writeRegistry(pipeline("P", "missing.jsonl", counter("Mistyped: x")), "", logs);
    outcome = program("check r.yaml");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.out, "r.yaml: no problems found, 2 warnings\n");
    EXPECT_THAT(outcome.err, HasSubstr("/missing.jsonl' can't be read: No such file"));
    EXPECT_THAT(outcome.err, HasSubstr("without reading the registry key 'Mistyped'"));
    EXPECT_FALSE(std::filesystem::exists(directoryM.path() / "process.log"));
}

} // namespace
