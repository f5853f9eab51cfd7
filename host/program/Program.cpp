#include "program/Program.h"

#include "base/EscapedText.h"
#include "base/Failures.h"
#include "base/LogFile.h"
#include "base/MessageCatalogue.h"
#include "base/PrivateDirectory.h"
#include "base/ProcessSignals.h"
#include "base/Terminal.h"
#include "commands/CommandFile.h"
#include "commands/CommandReport.h"
#include "commands/SendCommand.h"
#include "generate/Generate.h"
#include "input/StreamLibrary.h"
#include "program/CheckCommand.h"
#include "program/CommandLine.h"
#include "program/Summary.h"
#include "run/CommandExecutor.h"
#include "run/Host.h"
#include "run/ProgressLine.h"
#include "run/Service.h"
#include "watch/StatusText.h"
#include "watch/Watchdog.h"
#include "watch/Watcher.h"

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <memory>

namespace host {

namespace {

// The process log, or standard error if there is none.
class Logs {
public:
    explicit Logs(BAS::Status::Severity least) : leastM(least), standardErrorM(least) {}

    void openProcessLog(std::filesystem::path const& file) {
        processLogM = std::make_unique<LogFile>(file, leastM);
    }
    LogFile& process() { return processLogM == nullptr ? standardErrorM : *processLogM; }

    // Errors that end the program are also reported on standard error.
    void writeToCaller(BAS::Status const& status) {
        standardErrorM.write(status);
        if (processLogM != nullptr) {
            processLogM->write(status);
        }
    }

private:
    BAS::Status::Severity leastM;
    LogFile standardErrorM;
    std::unique_ptr<LogFile> processLogM;
};

// Standard output, unless a report goes there.
std::ostream& resultStream(CommandLine const& commandLine) {
    auto const& atEnd = commandLine.atEnd;
    return std::any_of(atEnd.begin(), atEnd.end(), &hasSenderReport) ? std::cerr : std::cout;
}

void print(std::filesystem::path const& report) {
    std::ifstream file(report);
    if (file.is_open() && file.peek() != std::ifstream::traits_type::eof()) {
        std::cout << file.rdbuf();
    }
    std::cout << std::flush;
}

// An object that opens standard output by its name, which may be a file, writes there by an offset
// of its own: what is printed next mustn't come over its report.
CommandResult executeBeforePrinting(CommandExecutor& executor, Command const& command) {
    auto result = executor.executeAndWait(command);
    ::lseek(STDOUT_FILENO, 0, SEEK_END); // fails on a pipe or a terminal, where no offset counts
    return result;
}

// With the reports for the sender printed that are whole.
CommandResult executeAtEnd(CommandExecutor& executor, Command& command) {
    if (!hasSenderReport(command)) {
        return executeBeforePrinting(executor, command);
    }
    std::optional<PrivateDirectory> directory;
    std::vector<std::filesystem::path> reports;
    command.reportForSender = [&] {
        if (!directory) {
            directory.emplace();
        }
        reports.push_back(directory->path() / std::to_string(reports.size()));
        return reports.back();
    };
    auto result = executeBeforePrinting(executor, command);
    for (auto const& report : reports) {
        print(report);
    }
    return result;
}

// Prints the results as they come, unless they are to be JSON.
std::vector<CommandResult> executeAtEnd(CommandExecutor& executor, CommandLine& commandLine) {
    std::vector<CommandResult> results;
    for (auto& command : commandLine.atEnd) {
        results.push_back(executeAtEnd(executor, command));
        if (!commandLine.isJson) {
            resultStream(commandLine) << printable(resultText(results.back())) << std::endl;
        }
    }
    return results;
}

void printSummary(Host const& host, CommandLine const& commandLine,
                  std::vector<CommandResult> const& results) {
    if (commandLine.isJson) {
        std::cout << summaryJson(host.pipelines(), results) << std::flush;
    } else if (!commandLine.isQuiet) {
        resultStream(commandLine) << summaryTable(host.pipelines()) << std::flush;
    }
}

// By default the allocator raises the limit from which blocks go back to the system at once, and a
// reload, which reads on another thread, can't use the blocks that the start left.
void giveLargeBlocksBack() {
    constexpr int leastBytes = 1 << 20;
    ::mallopt(M_MMAP_THRESHOLD, leastBytes);
}

ExitCode run(CommandLine& commandLine, Logs& logs) {
    giveLargeBlocksBack();
    Notification stop;
    Bell hangUps;
    ProcessSignals const signals(stop, hangUps);
    ServiceManager const manager;
    Watchdog watchdog(manager, stop);
    auto registry = readRegistry(commandLine.registry);
    if (registry.configuration.processLog) {
        logs.openProcessLog(*registry.configuration.processLog);
    }
    Host host(std::move(registry), ModuleLoader(ModuleLoader::defaultSearchPath()), logs.process(),
              commandLine.leastSeverity);
    host.start();
    ::malloc_trim(0); // what the start freed, a reload, on another thread, can't use
    std::optional<ProgressLine> progress;
    if (!commandLine.isQuiet && canEraseTerminalLine()) {
        progress.emplace(host.pipelines());
    }
    CommandExecutor executor(host, stop);
    Service service(host, executor, stop, progress ? &*progress : nullptr);
    Watcher const watcher(host, executor.journal(), commandLine.registry, hangUps, [&] {
        logs.process().reopen();
        host.reopenLogs();
    });
    host.logStarted();
    WatchedHost const watched(watchdog, host);
    service.run();
    auto const results = executeAtEnd(executor, commandLine);
    host.logSummaries();
    printSummary(host, commandLine, results);
    if (host.hasFailed() || service.hasFailed() || !std::cout) {
        return inputOrOutputFailed;
    }
    bool const areFaultless = std::all_of(results.begin(), results.end(),
                                          [](auto const& result) { return result.isFaultless(); });
    // A service that is ended by a signal succeeds whatever its input was.
    return (host.hasFaults() && !stop.isSet()) || !areFaultless ? doneWithFaults : done;
}

ExitCode send(CommandLine const& commandLine, Logs& logs) {
    auto const configuration = readRegistry(commandLine.registry).configuration;
    if (!configuration.commandDirectory) {
        throw makeStatus(BAS::Status::critical, {}, "ERR_NO_COMMAND_DIRECTORY",
                         {commandLine.registry.string()});
    }
    try {
        return sendCommand(inletOfCaller(configuration), *commandLine.sent, commandLine.timeout,
                           commandLine.isJson ? ResultForm::json : ResultForm::yaml);
    } catch (BAS::Status const& status) {
        logs.writeToCaller(status);
        return inputOrOutputFailed;
    }
}

ExitCode status(CommandLine const& commandLine, Logs& logs) {
    auto const file = statusFileOf(readRegistry(commandLine.registry).configuration);
    if (!file) {
        throw makeStatus(BAS::Status::critical, {}, "ERR_NO_STATUS_FILE",
                         {commandLine.registry.string()});
    }
    try {
        auto const json = readStatusFile(*file);
        if (!json) {
            logs.writeToCaller(makeStatus(BAS::Status::error, {}, "ERR_NO_HOST", {file->string()}));
            return noAnswer;
        }
        std::cout << (commandLine.isJson ? *json
                                         : statusTables(*json, std::chrono::system_clock::now()))
                  << std::flush;
        return std::cout ? done : inputOrOutputFailed;
    } catch (BAS::Status const& status) {
        logs.writeToCaller(status);
        return inputOrOutputFailed;
    }
}

ExitCode generate(CommandLine const& commandLine, Logs& logs) {
    try {
        std::cout << generate(commandLine.generate) << std::flush;
        return std::cout ? done : inputOrOutputFailed;
    } catch (BAS::Status const& status) {
        logs.writeToCaller(status);
        return inputOrOutputFailed;
    }
}

PipelineConfiguration const& pipelineOf(HostConfiguration const& configuration,
                                        CommandLine const& commandLine) {
    for (auto const& pipeline : configuration.pipelines) {
        if (pipeline.name == commandLine.pipeline && pipeline.stream) {
            return pipeline;
        }
    }
    throw makeStatus(BAS::Status::critical, {}, "ERR_NO_STREAM",
                     {commandLine.registry.string(), commandLine.pipeline});
}

ExitCode useStream(CommandLine const& commandLine, Logs& logs) {
    auto const configuration = readRegistry(commandLine.registry).configuration;
    auto const& pipeline = pipelineOf(configuration, commandLine);
    auto& library = ModuleLoader(ModuleLoader::defaultSearchPath()).loadStreamLibrary();
    auto const form = commandLine.isJson ? OutputForm::json : OutputForm::text;
    try {
        if (commandLine.verb == CommandLine::Verb::send) {
            Notification stop;
            SignalThread const signals(stop);
            return library.send(*pipeline.stream,
                                {commandFileText(*commandLine.sent), commandLine.collectedIn,
                                 commandLine.timeout, commandLine.isJson},
                                stop);
        }
        if (commandLine.verb == CommandLine::Verb::publish) {
            Notification stop;
            SignalThread const signals(stop);
            return library.publish(pipeline, commandLine.streamSource, form, stop);
        }
        return commandLine.isCreating ? library.create(*pipeline.stream, commandLine.streamLimits)
                                      : library.show(*pipeline.stream, form);
    } catch (BAS::Status const& status) {
        logs.writeToCaller(status);
        return inputOrOutputFailed;
    }
}

ExitCode perform(CommandLine& commandLine, Logs& logs) {
    switch (commandLine.verb) {
    case CommandLine::Verb::run:
        return run(commandLine, logs);
    case CommandLine::Verb::check:
        if (commandLine.isListingObjects) {
            return listObjects(commandLine.registry);
        }
        return checkRegistry(commandLine.registry, logs.process(), commandLine.isJson);
    case CommandLine::Verb::send:
        return commandLine.pipeline.empty() ? send(commandLine, logs)
                                            : useStream(commandLine, logs);
    case CommandLine::Verb::status:
        return status(commandLine, logs);
    case CommandLine::Verb::generate:
        return generate(commandLine, logs);
    case CommandLine::Verb::stream:
    case CommandLine::Verb::publish:
        break;
    }
    return useStream(commandLine, logs);
}

} // namespace

int runProgram(int argc, char const* const* argv) {
    auto parsed = parseCommandLine(argc, argv);
    if (auto const* const exitCode = std::get_if<ExitCode>(&parsed)) {
        return *exitCode;
    }
    auto& commandLine = std::get<CommandLine>(parsed);
    Logs logs(commandLine.leastSeverity);
    try {
        auto const exitCode = perform(commandLine, logs);
        if (!std::cout) {
            logs.writeToCaller(
                makeStatus(BAS::Status::critical, {}, "ERR_FILE_NOT_WRITABLE",
                           {"standard output", "what is printed there isn't whole"}));
        }
        return logs.process().hasFailed() ? inputOrOutputFailed : exitCode;
    } catch (StartFailure const& failure) {
        for (auto const& problem : failure.problems) {
            logs.writeToCaller(problem);
        }
    } catch (BAS::Status const& status) {
        logs.writeToCaller(status);
    } catch (...) {
        logs.writeToCaller(
            makeStatus(BAS::Status::critical, {}, "ERR_PROGRAM_FAILED", {currentExceptionText()}));
        return inputOrOutputFailed;
    }
    return startFailed;
}

} // namespace host
