// Two pipelines at work in one host, each with an operator who gives it command after command: each
// command is answered once and each report is whole. Under the thread sanitizer the host also ends
// with an error when its threads raced.
//
//   races [EDRS]      that many EDRs, rounded up, through the two pipelines together
#include "host/HostProcess.h"
#include "support/SqliteFile.h"
#include "support/TemporaryDirectory.h"

#include <cstdlib>
#include <fstream>
#include <future>
#include <iostream>

namespace trust {

namespace {

constexpr std::size_t edrsOfFile = 4000; // a multiple of the demo's
constexpr std::size_t numberOfEvents = 12;
constexpr char const* pipelines[] = {"One", "Two"};

void require(bool condition, std::string const& what) {
    if (!condition) {
        throw std::runtime_error(what);
    }
}

std::string readSource(char const* name) {
    std::ifstream file(std::filesystem::path(SOURCES) / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string pipelineText(std::string const& name) {
    return "    " + name + ":\n      EdrDescription: edr.yaml\n      Log: " + name +
           ".log\n      Input: {Directory: in" + name + "}\n      Functions:\n" +
           "        F: {ModuleName: FCT_DataDump, Module: {AccountDataModule: Account, "
           "BalanceDataModule: Balance, DiscountDataModule: Discount, RateplanDataModule: "
           "Rateplan, PriceDataModule: Price, NumberOfEvents: " +
           std::to_string(numberOfEvents) + "}}\n";
}

// What an operator sends, in turn. OBJECT and FILE stand for the plug-in of the pipeline and for a
// file of the command's own.
struct CommandText {
    char const* text;
    bool isHandled;
    bool writesReport = false;
};
constexpr CommandText commandTexts[] = {
    {"OBJECT: {DumpEvents: FILE}", true, true},
    {"OBJECT: {Dump: FILE}", true},
    {"OBJECT: {DumpEvents: FILE}\nhost.Nobody: {DumpEvents: FILE}", false, true},
    {"OBJECT: {DumpEvents: }", false},
    {"OBJECT: {Dump: /nowhere/FILE}", true},
    {"OBJECT: {Dump: [FILE]}", false},
    {"OBJECT: {Dump: FILE, Dump: FILE}", false},
    {"OBJECT: {Dump: \"FILE", false},
    {"\x04", false},
    {"", false},
    {"OBJECT: {Colour: red}", true},
    {"OBJECT: {ClearData: }", true},
};

// One of them is for two objects.
constexpr std::size_t answersOfRound = std::size(commandTexts) + 1;

class Races {
public:
    explicit Races(std::size_t edrs) : filesM((edrs + 2 * edrsOfFile - 1) / (2 * edrsOfFile)) {
        support::runSql(pathOf("reference.db"),
                        readSource("modules/reference-schema.sql") +
                            readSource("demo/reference-data.sql") +
                            "INSERT INTO KWL_PIPELINE VALUES ('One', 'RATED_EVENTS'), "
                            "('Two', 'RATED_EVENTS');");
        directoryM.write("edr.yaml", readSource("demo/edr-description.yaml"));
        std::string registry = "host:\n  Commands: {Directory: cmd}\n  Log: {Process: log}\n"
                               "  DataPool:\n    Login: {ModuleName: DBC_Database, Module: "
                               "{Connection: \"sqlite3://db=reference.db\"}}\n";
        for (std::string const module : {"Account", "Balance", "Discount", "Rateplan", "Price"}) {
            registry +=
                "    " + module + ": {ModuleName: DAT_" + module + ", Module: {Database: Login}}\n";
        }
        registry += "  Pipelines:\n";
        for (auto const* const name : pipelines) {
            registry += pipelineText(name);
            std::filesystem::create_directory(pathOf(std::string("in") + name));
        }
        directoryM.write("r.yaml", registry);
        std::filesystem::create_directory(pathOf("cmd"));
        std::filesystem::permissions(pathOf("cmd"), std::filesystem::perms::owner_all);
        writeInputs();
    }

    // Returns how many commands there were. Throws a std::runtime_error when something is wrong.
    std::size_t run() {
        HostProcess host(directoryM.path(), {"run", "r.yaml", "--quiet"});
        auto other = std::async(std::launch::async, [this] { return operate(pipelines[1]); });
        auto const commands = operate(pipelines[0]) + other.get();
        host.signal(SIGTERM);
        auto const exitCode = host.wait();
        require(exitCode == 0 && directoryM.read("err").empty(),
                "the host ended with " + std::to_string(exitCode) + ":\n" + directoryM.read("err"));
        checkLog(commands);
        return commands;
    }
    std::size_t edrs() const { return 2 * filesM * edrsOfFile; }

private:
    std::string pathOf(std::string const& name) const {
        return (directoryM.path() / name).string();
    }

    // The demo's EDRs over and over; every input is the same file.
    void writeInputs() {
        auto const demo = readSource("demo/events.jsonl");
        std::string text;
        for (std::size_t edr = 0; edr < edrsOfFile; edr += count(demo, "\n")) {
            text += demo;
        }
        directoryM.write("edrs", text);
        for (std::size_t file = 0; file < filesM; ++file) {
            for (std::string const name : pipelines) {
                std::filesystem::create_hard_link(pathOf("edrs"),
                                                  pathOf("in" + name + "/" + std::to_string(file)));
            }
        }
    }

    bool isDone(std::string const& pipeline) const {
        for (std::size_t file = 0; file < filesM; ++file) {
            if (!std::filesystem::exists(
                    pathOf("in" + pipeline + "/done/" + std::to_string(file)))) {
                return false;
            }
        }
        return true;
    }

    // Gives all commands at once, waits for their answers and begins again, until the pipeline has
    // read its inputs.
    std::size_t operate(std::string const& pipeline) const {
        std::size_t commands = 0;
        do {
            for (auto const& each : commandTexts) {
                drop(pipeline + std::to_string(commands++), pipeline, each.text);
            }
            commands -= std::size(commandTexts);
            for (auto const& each : commandTexts) {
                checkAnswer(pipeline + std::to_string(commands++), each);
            }
        } while (!isDone(pipeline));
        return commands;
    }

    void drop(std::string const& name, std::string const& pipeline, std::string text) const {
        for (auto const& [word, value] :
             {std::pair(std::string("OBJECT"),
                        "host.Pipelines." + pipeline + ".Functions.F.Module"),
              std::pair(std::string("FILE"), pathOf(name))}) {
            for (auto at = text.find(word); at != std::string::npos; at = text.find(word)) {
                text.replace(at, word.size(), value);
            }
        }
        directoryM.write(name + ".tmp", text);
        std::filesystem::rename(pathOf(name + ".tmp"), pathOf("cmd/" + name + ".yaml"));
    }

    void checkAnswer(std::string const& name, CommandText const& command) const {
        auto const result = "cmd/" + name + ".result";
        require(directoryM.read("err").empty(), "the host says\n" + directoryM.read("err"));
        require(eventually([&] { return std::filesystem::exists(pathOf(result)); }),
                "no answer to " + name);
        auto const answer = directoryM.read(result);
        require(answer.find(command.isHandled ? "Handled: true\n" : "Handled: false\n") !=
                    std::string::npos,
                std::string("to '") + command.text + "' the answer is\n" + answer);
        std::filesystem::remove(pathOf(result));
        if (command.writesReport) {
            auto const report = directoryM.read(name);
            auto const events = count(report, "Event type= Identifier=");
            require(events <= numberOfEvents &&
                        count(report, '\n' + std::string(70, '-')) + (events > 0 ? 1 : 0) ==
                            2 * events,
                    "a report isn't whole:\n" + report);
        }
        std::filesystem::remove(pathOf(name));
    }

    // A second answer would have left a file, and stands in the log.
    void checkLog(std::size_t commands) const {
        require(std::filesystem::is_empty(pathOf("cmd")), "an answer too many");
        auto const log = directoryM.read("log");
        std::size_t answers = 0;
        for (auto const* const message :
             {" MSG_COMMAND_RESULT ", " ERR_COMMAND_REJECTED ", " ERR_COMMAND_MALFORMED "}) {
            answers += count(log, message);
        }
        auto const rounds = commands / std::size(commandTexts);
        require(answers == rounds * answersOfRound, "an answer too many stands in the log");
        require(count(log, " MSG_PIPELINE_SUMMARY EDRs read: " +
                               std::to_string(filesM * edrsOfFile) + ",") == std::size(pipelines),
                "an EDR is missing");
    }

    support::TemporaryDirectory directoryM;
    std::size_t filesM; // of each pipeline
};

} // namespace

} // namespace trust

int main(int argc, char** argv) {
    try {
        trust::Races races(argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 100000);
        auto const commands = races.run();
        std::cout << races.edrs() << " EDRs, " << commands << " commands, each answered once\n";
        return EXIT_SUCCESS;
    } catch (std::exception const& error) {
        std::cout << error.what() << "\n";
        return EXIT_FAILURE;
    }
}
