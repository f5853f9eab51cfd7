#include "Program.h"

#include "CommandLine.h"
#include "Host.h"
#include "LogFile.h"
#include "StartFailure.h"

#include <iostream>
#include <memory>

namespace host {

namespace {

// The process log, and standard error as long as, or besides, there is none.
class Logs {
public:
    void openProcessLog(std::filesystem::path const& file) {
        processLogM = std::make_unique<LogFile>(file);
    }
    LogFile& process() { return processLogM == nullptr ? standardErrorM : *processLogM; }

    // What keeps the program from its work is told to its caller as well.
    void writeToCaller(BAS::Status const& status) {
        standardErrorM.write(status);
        if (processLogM != nullptr) {
            processLogM->write(status);
        }
    }

private:
    LogFile standardErrorM;
    std::unique_ptr<LogFile> processLogM;
};

// Returns whether all commands were handled.
bool executeAll(Host& host, std::vector<Command> const& commands) {
    bool areHandled = true;
    for (auto const& command : commands) {
        auto const result = host.execute(command);
        std::cout << resultText(result) << std::endl;
        areHandled = areHandled && result.isHandled;
    }
    return areHandled;
}

ExitCode run(Host& host, CommandLine const& commandLine) {
    host.runPipelines();
    bool const areHandled = executeAll(host, commandLine.atEnd);
    if (host.hasFailed() || !std::cout) {
        return inputOrOutputFailed;
    }
    return host.hasFaults() || !areHandled ? doneWithFaults : done;
}

ExitCode perform(CommandLine const& commandLine, Logs& logs) {
    auto registry = readRegistry(commandLine.registry);
    if (registry.configuration.processLog) {
        logs.openProcessLog(*registry.configuration.processLog);
    }
    Host host(std::move(registry), ModuleLoader(ModuleLoader::defaultSearchPath()), logs.process());
    host.start();
    if (commandLine.verb == CommandLine::Verb::check) {
        std::cout << commandLine.registry.string() << ": no problems found" << std::endl;
        return std::cout ? done : inputOrOutputFailed;
    }
    return run(host, commandLine);
}

} // namespace

int runProgram(int argc, char const* const* argv) {
    auto const parsed = parseCommandLine(argc, argv);
    if (auto const* const exitCode = std::get_if<ExitCode>(&parsed)) {
        return *exitCode;
    }
    Logs logs;
    try {
        auto const exitCode = perform(std::get<CommandLine>(parsed), logs);
        return logs.process().hasFailed() ? inputOrOutputFailed : exitCode;
    } catch (StartFailure const& failure) {
        for (auto const& problem : failure.problems) {
            logs.writeToCaller(problem);
        }
    } catch (BAS::Status const& status) {
        logs.writeToCaller(status);
    }
    return startFailed;
}

} // namespace host
