#include "registry/Registry.h"

#include "StartFailureText.h"
#include "support/TemporaryDirectory.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAreArray;

std::string const goodRegistry = R"(host:
  Log: {Process: process.log}
  DataPool:
    Login:
      ModuleName: DBC_Database
      Module: {Connection: "sqlite3://db=x.db"}
  Pipelines:
    Main:
      EdrDescription: sub/../edr.yaml
      BatchSize: 7
      Input: {Files: [a.jsonl, /abs/b.jsonl, "-"]}
      Functions:
        Dump:
          ModuleName: FCT_DataDump
          Library: lib/own.so
          Module:
            NumberOfEvents: 010
            Own.Key: {Deep: text}
            Empty:
    Second:
      EdrDescription: edr.yaml
      Input: {Files: [a.jsonl], MaxLineLength: 100}
      Log: second.log
      Functions:
)";

TEST(Registry, IsReadWithPathsFromItsDirectory) {
    support::TemporaryDirectory const directory;
    auto const registry = host::readRegistry(directory.write("r.yaml", goodRegistry));
    auto const& configuration = registry.configuration;
    auto const in = [&](char const* name) { return directory.path() / name; };

    EXPECT_EQ(configuration.processLog, in("process.log"));
    ASSERT_EQ(configuration.dataPool.size(), 1U);
    EXPECT_EQ(configuration.dataPool[0].registeredName, "host.DataPool.Login.Module");
    ASSERT_EQ(configuration.pipelines.size(), 2U);

    auto const& main = configuration.pipelines[0];
    EXPECT_EQ(main.edrDescription, in("edr.yaml"));
    EXPECT_EQ(main.batchSize, 7U);
    EXPECT_EQ(main.log, std::nullopt);
    ASSERT_EQ(main.inputs.size(), 3U);
    // Both pipelines read the first input: their reject files must differ.
    EXPECT_EQ(main.inputs[0].rejectFile, in("a.jsonl.Main.reject"));
    EXPECT_EQ(configuration.pipelines[1].inputs[0].rejectFile, in("a.jsonl.Second.reject"));
    EXPECT_EQ(main.inputs[1].rejectFile, "/abs/b.jsonl.reject");
    EXPECT_EQ(main.inputs[2].rejectFile, in("stdin.reject"));
    ASSERT_EQ(main.functions.size(), 1U);
    EXPECT_EQ(main.functions[0].registeredName, "host.Pipelines.Main.Functions.Dump.Module");
    EXPECT_EQ(main.functions[0].library, in("lib/own.so"));

    auto const& second = configuration.pipelines[1];
    EXPECT_EQ(second.batchSize, 100U);
    EXPECT_EQ(second.maxLineLength, 100U);
    EXPECT_EQ(second.log, in("second.log"));
}

TEST(Registry, GivesModulesTheirSubtreeAsTexts) {
    support::TemporaryDirectory const directory;
    auto const registry = host::readRegistry(directory.write("r.yaml", goodRegistry));
    BAS::RegistryEntry const* entry = registry.root.get();
    EXPECT_EQ(entry->name(), "host");
    for (auto const* const key : {"Pipelines", "Main", "Functions", "Dump", "Module"}) {
        entry = entry->find(key);
        ASSERT_NE(entry, nullptr) << key;
    }
    EXPECT_EQ(entry->find("NumberOfEvents")->value(), "010");
    EXPECT_EQ(entry->find("Empty")->value(), "");
    EXPECT_EQ(entry->find("Own.Key")->find("Deep")->value(), "text");
}

struct BadRegistry {
    char const* title;
    std::string find; // in the good registry; empty: the replacement is the whole file
    std::string replacement;
    std::vector<std::string> problems;
};

BadRegistry const badRegistries[] = {
    {"no YAML", "Log: {", "Log: }", {"2:8: not valid YAML: illegal flow end"}},
    {"a tab for blanks",
     "    Login:\n",
     "\tLogin:\n",
     {"4:2: not valid YAML: a tab can't be used to indent a line, expected blanks"}},
    {"a text that needs quotes",
     "BatchSize: 7",
     "BatchSize: @7",
     {"10:18: not valid YAML: a text that begins with '@' needs quotes"}},
    {"too deep",
     "{Deep: text}",
     std::string(95, '[') + std::string(95, ']'),
     {"18:115: nested deeper than 100 levels, expected less"}},
    {"empty", "", "# nothing\n", {"1:1: the file is empty"}},
    {"no UTF-8", "BatchSize", "B\xc3\xa9\xff", {"10:10: not valid UTF-8: the byte FF"}},
    {"a control character",
     "      Log: second",
     "\x04      Log: second",
     {"23:1: the control character U+0004 can't be used here, write it as \"\\x04\""}},
    {"two roots",
     "",
     "a: {}\nb: {}\n",
     {"1:1: the file must hold one mapping with one key, the registry's root name"}},
    {"two documents",
     "second.log\n      Functions:\n",
     "second.log\n      Functions:\n---\na: b\n",
     {"26:1: a second document isn't expected here"}},
    {"a root without its keys",
     "",
     "host:\n",
     {"1:1: 'host' lacks the key 'DataPool'", "1:1: 'host' lacks the key 'Pipelines'"}},
    {"no pipeline",
     "",
     "host: {DataPool: {}, Pipelines: }\n",
     {"1:22: 'Pipelines' needs at least one pipeline"}},
    {"a mistyped key",
     "BatchSize: 7",
     "BatchSise: 7",
     {"10:7: unknown key 'BatchSise' (did you mean 'BatchSize'?)"}},
    {"an unknown key", "BatchSize: 7", "Colour: red", {"10:7: unknown key 'Colour'"}},
    {"a host's key twice",
     "BatchSize: 7",
     "BatchSize: 7\n      BatchSize: 8",
     {"11:7: the key 'BatchSize' is given twice, first on line 10"}},
    {"a module's key twice, deep down",
     "{Deep: text}",
     "{Deep: text, Deep: again}",
     {"18:35: the key 'Deep' is given twice, first on line 18"}},
    {"a sequence below Module",
     "{Deep: text}",
     "{Deep: [text]}",
     {"18:23: 'Deep' must be a text or a mapping, not a sequence"}},
    {"an alias",
     "{Deep: text}",
     "&x {Deep: *x}",
     {"18:32: an alias can't be used here, write the value out"}},
    {"several problems in the order of their places",
     "BatchSize: 7",
     "BatchSize: many\n      Log: [x]\n      Size: 7",
     {"10:18: 'BatchSize' must be a whole number from 1 to 100000, not 'many'",
      "11:7: 'Log' must be a text, not a sequence", "12:7: unknown key 'Size'"}},
    {"a batch of no EDRs",
     "BatchSize: 7",
     "BatchSize: 0",
     {"10:18: 'BatchSize' must be a whole number from 1 to 100000, not '0'"}},
    {"a name with a dot",
     "    Login:",
     "    Log.in:",
     {"4:5: 'Log.in' can't be a name: expected letters, digits, '_' and '-', no dots"}},
    {"a module without its name",
     "ModuleName: DBC_Database",
     "Library: x.so",
     {"4:5: 'Login' lacks the key 'ModuleName'"}},
    {"a module name that would leave the module path",
     "DBC_Database",
     "../evil",
     {"5:19: '../evil' can't be a module name: expected letters, digits and '_'"}},
    {"a text for a mapping",
     "Functions:\n        Dump:",
     "Functions: none\n      Other:",
     {"12:7: 'Functions' must be a mapping, not a text", "13:7: unknown key 'Other'"}},
    {"a pipeline that lacks its keys",
     "      EdrDescription: edr.yaml\n      Input: {Files: [a.jsonl], MaxLineLength: 100}",
     "      BatchSize: 1",
     {"20:5: 'Second' lacks the key 'EdrDescription'", "20:5: 'Second' lacks the key 'Input'"}},
    {"no input file",
     "{Files: [a.jsonl], MaxLineLength: 100}",
     "{Files: []}",
     {"22:15: 'Files' needs at least one file"}},
    {"an input twice",
     "[a.jsonl, /abs/b.jsonl",
     "[a.jsonl, ./a.jsonl",
     {"11:32: the input './a.jsonl' is named twice, first on line 11"}},
    {"standard input for two",
     "[a.jsonl], Max",
     "[\"-\"], Max",
     {"22:23: the input '-' is named twice, first on line 11"}},
    {"an input that is another's reject file",
     "/abs/b.jsonl",
     "c.jsonl, c.jsonl.reject",
     {"11:41: this input is the reject file of the input 'c.jsonl' and would be overwritten"}},
    {"a control character in a path",
     "Log: second.log",
     "Log: \"second\\x07.log\"",
     {"23:12: the path 'second\x07.log' has a control character, expected none"}},
    {"a log that is an input",
     "Log: second.log",
     "Log: sub/../a.jsonl",
     {"23:12: the file 'a.jsonl' can't be that of host.Pipelines.Second.Log and of "
      "host.Pipelines.Main.Input.Files on line 11"}},
    {"the same file for two purposes",
     "  Log: {Process: process.log}",
     "  Log: {Process: x}\n  Status: {File: y}\n  Metrics: {File: ./y}",
     {"4:19: the file 'y' can't be that of host.Metrics.File and of host.Status.File on line 3"}},
    {"a log that is a reject file",
     "Log: second.log",
     "Log: a.jsonl.Second.reject",
     {"11:23: the file 'a.jsonl.Second.reject' can't be that of the reject file of an input and of "
      "host.Pipelines.Second.Log on line 23"}},
    {"a log among the inputs",
     "{Files: [a.jsonl], MaxLineLength: 100}\n      Log: second.log",
     "{Directory: in}\n      Log: in/second.log",
     {"23:12: the file of host.Pipelines.Second.Log can't be in the input directory of the "
      "pipeline "
      "'Second'"}},
    {"files and a directory",
     "MaxLineLength: 100",
     "Directory: in",
     {"22:33: 'Input' has both 'Files' and 'Directory', expected one of them"}},
    {"a stream with an authority for no server",
     "{Files: [a.jsonl], MaxLineLength: 100}",
     "{Stream: {Name: S, Servers: [\"nats://a\"], Partitions: 0-2, Of: 2, User: u, "
     "CertificateAuthority: ca.pem, StateDirectory: s, InboxPrefix: a.b}}",
     {"22:15: 'Partitions' names 2, but 'Of' says that there are 2, counted from 0",
      "22:15: expected 'Credentials', or 'User' with 'PasswordFile', or none of them",
      "22:15: 'CertificateAuthority' is for servers that begin with 'tls://', and 'Servers' has "
      "none: everything would be sent in clear",
      "22:151: 'a.b' can't be a name: expected letters, digits, '_' and '-', no dots"}},
    {"commands in an input directory",
     "  Log: {Process: process.log}\n  DataPool:\n    Login:\n      ModuleName: DBC_Database\n"
     "      Module: {Connection: \"sqlite3://db=x.db\"}\n  Pipelines:\n    Main:\n"
     "      EdrDescription: sub/../edr.yaml\n      BatchSize: 7\n"
     "      Input: {Files: [a.jsonl, /abs/b.jsonl, \"-\"]}\n",
     "  Commands: {Directory: in}\n  DataPool:\n  Pipelines:\n    Main:\n"
     "      EdrDescription: edr.yaml\n      Input: {Directory: sub/../in/}\n",
     {"7:26: the directory 'sub/../in/' is named twice, first on line 2"}},
};

// Where the members of a group may write.
TEST(Registry, KeepsReportsApartFromEverythingElse) {
    support::TemporaryDirectory const directory;
    for (auto const* const name : {"log", "cmd", "behind-in"}) {
        std::filesystem::create_directory(directory.path() / name);
    }
    std::filesystem::create_symlink("log", directory.path() / "to-log");
    std::filesystem::create_symlink(directory.path() / "cmd", directory.path() / "to-cmd");
    std::filesystem::create_symlink("behind-in", directory.path() / "in");
    struct {
        char const* reports;
        std::vector<std::string> other; // what is named beside it
    } const cases[] = {
        {"rep", {}},
        {"cmd2", {}},
        {"cmd/answers", {"/cmd' of host.Commands.Directory on line 2 lie"}},
        {"in/done/", {"/in' of host.Pipelines.P.Input.Directory on line 4 lie"}},
        {"log", {"/log/process.log' of host.Log.Process"}},
        {"to-log", {"/log/process.log' of host.Log.Process"}},
        {"to-cmd", {"/cmd' of host.Commands.Directory on line 2 lie"}},
        {"behind-in", {"/in' of host.Pipelines.P.Input.Directory on line 4 lie"}},
        {"edr.yaml", {"/edr.yaml' of host.Pipelines.P.EdrDescription"}},
        {"..",
         {"/cmd' of", "/in' of", "/edr.yaml' of host.Pipelines.P.EdrDescription",
          "/log/process.log' of", "/r.yaml' of the registry"}},
    };
    for (auto const& each : cases) {
        SCOPED_TRACE(each.reports);
        auto const file = directory.write(
            "r.yaml",
            "host:\n  Commands: {Directory: cmd, Group: g, Reports: " + std::string(each.reports) +
                "}\n  Log: {Process: log/process.log}\n  Pipelines: {P: {Input: "
                "{Directory: in}, EdrDescription: edr.yaml, Functions: }}\n"
                "  DataPool:\n");
        auto const problems = each.other.empty()
                                  ? (host::readRegistry(file), std::vector<std::string>())
                                  : problemsOf([&] { host::readRegistry(file); });
        ASSERT_EQ(problems.size(), each.other.size());
        for (std::size_t i = 0; i < problems.size(); ++i) {
            EXPECT_THAT(problems[i], testing::StartsWith("2:49: the directory '"));
            EXPECT_THAT(problems[i], testing::HasSubstr("of host.Commands.Reports "));
            EXPECT_THAT(problems[i], testing::HasSubstr(each.other[i]));
        }
    }
}

TEST(Registry, IsRejectedWithEveryProblemAndItsPlace) {
    support::TemporaryDirectory const directory;
    for (auto const& each : badRegistries) {
        SCOPED_TRACE(each.title);
        auto text = each.replacement;
        if (!each.find.empty()) {
            auto const at = goodRegistry.find(each.find);
            ASSERT_NE(at, std::string::npos);
            text = goodRegistry;
            text.replace(at, each.find.size(), each.replacement);
        }
        auto const file = directory.write("r.yaml", text);
        EXPECT_THAT(problemsOf([&] { host::readRegistry(file); }), ElementsAreArray(each.problems));
    }
}

} // namespace
