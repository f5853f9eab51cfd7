#include "program/CheckCommand.h"

#include "BAS/LogSink.h"
#include "base/Failures.h"
#include "base/MessageCatalogue.h"
#include "base/WriteObstacle.h"
#include "run/Host.h"

#include <fmt/format.h>

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <iostream>

namespace host {

namespace {

// Counts what doesn't keep the host from running.
class WarningCounter : public BAS::LogSink {
public:
    explicit WarningCounter(BAS::LogSink& log) : logM(log) {}

    void write(BAS::Status const& status) override {
        warningsM += status.severity() == BAS::Status::warning ? 1 : 0;
        logM.write(status);
    }
    std::size_t warnings() const noexcept { return warningsM; }

private:
    BAS::LogSink& logM;
    std::atomic<std::size_t> warningsM{0};
};

using Statuses = std::vector<BAS::Status>;

void checkLog(std::optional<std::filesystem::path>& file, BAS::String const& object,
              Statuses& problems) {
    if (!file) {
        return;
    }
    if (auto const obstacle = writeObstacle(*file)) {
        problems.push_back(makeStatus(BAS::Status::critical, object, "ERR_FILE_NOT_WRITABLE",
                                      {file->string(), *obstacle}));
    }
    file.reset();
}

// Leaves a configuration whose pipelines log where the host does.
void checkLogs(HostConfiguration& configuration, Statuses& problems) {
    checkLog(configuration.processLog, {}, problems);
    for (auto& pipeline : configuration.pipelines) {
        checkLog(pipeline.log, pipeline.registeredName, problems);
    }
}

// A file that isn't there yet may be when the host runs, and the host goes on without it.
void warnOfInputs(HostConfiguration const& configuration, BAS::LogSink& log) {
    for (auto const& pipeline : configuration.pipelines) {
        for (auto const& input : pipeline.inputs) {
            if (input.file != "-" &&
                ::faccessat(AT_FDCWD, input.file.c_str(), R_OK, AT_EACCESS) != 0) {
                log.write(makeStatus(
                    BAS::Status::warning, pipeline.registeredName, "ERR_FILE_NOT_READABLE",
                    {input.file.string(), std::generic_category().message(errno)}));
            }
        }
    }
}

std::size_t logAll(Statuses const& problems, BAS::LogSink& log) {
    for (auto const& problem : problems) {
        log.write(problem);
    }
    return problems.size();
}

// Returns how many there are.
std::size_t logProblems(std::filesystem::path const& file, BAS::LogSink& log) {
    Statuses problems;
    auto registry = readRegistry(file, problems);
    checkLogs(registry.configuration, problems);
    auto const count = logAll(problems, log);
    warnOfInputs(registry.configuration, log);
    Host host(std::move(registry), ModuleLoader(ModuleLoader::defaultSearchPath()), log,
              BAS::Status::info);
    return count + logAll(host.check(), log);
}

std::size_t logProblemsOfAll(std::filesystem::path const& file, BAS::LogSink& log) {
    try {
        return logProblems(file, log);
    } catch (StartFailure const& failure) {
        return logAll(failure.problems, log);
    } catch (BAS::Status const& status) {
        return logAll({status}, log);
    }
}

std::string counted(std::size_t count, char const* what) {
    return fmt::format("{} {}{}", count == 0 ? "no" : std::to_string(count), what,
                       count == 1 ? "" : "s");
}

} // namespace

ExitCode checkRegistry(std::filesystem::path const& registry, BAS::LogSink& log) {
    WarningCounter counter(log);
    auto const problems = logProblemsOfAll(registry, counter);
    auto const warnings =
        counter.warnings() == 0 ? std::string() : ", " + counted(counter.warnings(), "warning");
    std::cout << registry.string() << ": " << counted(problems, "problem") << " found" << warnings
              << std::endl;
    return !std::cout ? inputOrOutputFailed : problems == 0 ? done : startFailed;
}

} // namespace host
