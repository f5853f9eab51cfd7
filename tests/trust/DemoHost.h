// The demo in this process: the real host, data modules and plug-in, on a reference database of the
// test's choice.
#pragma once

#include "ReferenceServer.h"
#include "base/MessageCatalogue.h"
#include "run/Host.h"
#include "run/Service.h"
#include "support/LogRecorder.h"

namespace trust {

struct DemoOutcome {
    std::vector<std::string> problems; // of the start
    std::vector<std::string> log;      // of the process and its pipeline
    std::string reports;               // both, if it started

    // Whether the text stands anywhere.
    bool tells(std::string const& text) const {
        auto const has = [&](std::string const& each) {
            return each.find(text) != std::string::npos;
        };
        return std::any_of(problems.begin(), problems.end(), has) ||
               std::any_of(log.begin(), log.end(), has) || has(reports);
    }
};

class DemoHost {
public:
    DemoHost() {
        for (auto const* const name : {"edr-description.yaml", "events.jsonl"}) {
            directoryM.write(name, fileText(std::string(DEMO "/") + name));
        }
    }

    static std::string goldenReports() {
        return fileText(GOLDEN "/events.txt") + fileText(GOLDEN "/dump.txt");
    }

    // Starts everything and, if that can be, hands it the demo's EDRs and asks for both reports.
    // A command is run in a shell before the registry key, a data module or "Pipelines".
    DemoOutcome run(std::string const& connection, std::string const& command = {},
                    std::string const& key = {}) const {
        auto registry = fileText(DEMO "/registry.yaml");
        replace(registry, "sqlite3://db=reference.db", connection);
        if (!command.empty()) {
            auto const breaker =
                "    Breaker: {ModuleName: TestBreaker, Module: {Command: \"" + command + "\"}}\n";
            auto const line = (key == "Pipelines" ? "  " : "    ") + key + ":\n";
            replace(registry, line, breaker + line);
        }
        DemoOutcome outcome;
        support::LogRecorder log;
        host::Host host(host::readRegistry(directoryM.write("registry.yaml", registry)),
                        host::ModuleLoader({MODULE_DIRECTORY, TEST_MODULE_DIRECTORY}), log,
                        BAS::Status::debug);
        for (auto const& problem : host.check()) {
            outcome.problems.push_back(host::messageText(problem));
        }
        if (outcome.problems.empty()) {
            host::Notification stop;
            host::CommandExecutor executor(host, stop);
            host::Service(host, executor, stop, nullptr).run();
            for (auto const* const key_ : {"DumpEvents", "Dump"}) {
                auto const file = (directoryM.path() / key_).string();
                executor.executeAndWait(host::parseCommand(
                    "host.Pipelines.Main.Functions.DataDump.Module " + (key_ + ("=" + file))));
                outcome.reports += fileText(file);
            }
        }
        outcome.log = log.entries();
        return outcome;
    }

private:
    static void replace(std::string& text, std::string const& part, std::string const& other) {
        text.replace(text.find(part), part.size(), other);
    }

    support::TemporaryDirectory directoryM;
};

} // namespace trust
