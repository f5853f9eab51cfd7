#include "program/CheckCommand.h"

#include "BAS/LogSink.h"
#include "base/EscapedText.h"
#include "base/Failures.h"
#include "base/JsonText.h"
#include "base/WriteObstacle.h"
#include "run/Host.h"

#include <fmt/format.h>

#include <fcntl.h>
#include <unistd.h>

#include <iostream>
#include <mutex>

namespace host {

namespace {

using Statuses = std::vector<BAS::Status>;

// Keeps what doesn't keep the host from running.
class WarningSink : public BAS::LogSink {
public:
    explicit WarningSink(BAS::LogSink& log) : logM(log) {}

    void write(BAS::Status const& status) override {
        if (status.severity() == BAS::Status::warning) {
            std::lock_guard const guard(guardM);
            warningsM.push_back(status);
        }
        logM.write(status);
    }
    // Once nobody writes any more.
    Statuses const& warnings() const noexcept { return warningsM; }

private:
    BAS::LogSink& logM;
    std::mutex guardM;
    Statuses warningsM;
};

using Obstacle = std::optional<std::string>(std::filesystem::path const&);

void checkFile(std::optional<std::filesystem::path> const& file, BAS::String const& object,
               Obstacle& obstacleOf, Statuses& problems) {
    if (auto const obstacle = file ? obstacleOf(*file) : std::nullopt) {
        problems.push_back(makeStatus(BAS::Status::critical, object, "ERR_FILE_NOT_WRITABLE",
                                      {file->string(), *obstacle}));
    }
}

// Leaves a configuration whose pipelines log where the host does.
void checkFiles(HostConfiguration& configuration, Statuses& problems) {
    checkFile(configuration.processLog, {}, writeObstacle, problems);
    checkFile(configuration.statusFile, {}, replaceObstacle, problems);
    checkFile(configuration.metricsFile, {}, replaceObstacle, problems);
    for (auto& pipeline : configuration.pipelines) {
        checkFile(pipeline.log, pipeline.registeredName, writeObstacle, problems);
        pipeline.log.reset();
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

void logAll(Statuses const& problems, BAS::LogSink& log) {
    for (auto const& problem : problems) {
        log.write(problem);
    }
}

void append(Statuses& problems, Statuses const& more) {
    problems.insert(problems.end(), more.begin(), more.end());
}

// Logs them and returns them.
Statuses findProblems(std::filesystem::path const& file, BAS::LogSink& log) {
    Statuses problems;
    auto registry = readRegistry(file, problems);
    checkFiles(registry.configuration, problems);
    logAll(problems, log);
    warnOfInputs(registry.configuration, log);
    Host host(std::move(registry), ModuleLoader(ModuleLoader::defaultSearchPath()), log,
              BAS::Status::info);
    auto const problemsOfStart = host.check();
    logAll(problemsOfStart, log);
    append(problems, problemsOfStart);
    return problems;
}

Statuses findAllProblems(std::filesystem::path const& file, BAS::LogSink& log) {
    Statuses problems;
    try {
        return findProblems(file, log);
    } catch (StartFailure const& failure) {
        problems = failure.problems;
    } catch (BAS::Status const& status) {
        problems = {status};
    }
    logAll(problems, log);
    return problems;
}

std::string statusesJson(Statuses const& statuses) {
    std::vector<std::string> parts;
    for (auto const& status : statuses) {
        parts.push_back(jsonStatusOfObject(status));
    }
    return jsonArray(parts);
}

std::string counted(std::size_t count, char const* what) {
    return fmt::format("{} {}{}", count == 0 ? "no" : std::to_string(count), what,
                       count == 1 ? "" : "s");
}

} // namespace

ExitCode listObjects(std::filesystem::path const& file) {
    auto const registry = readRegistry(file);
    auto const& configuration = registry.configuration;
    std::vector<ModuleConfiguration> modules = configuration.dataPool;
    for (auto const& pipeline : configuration.pipelines) {
        modules.insert(modules.end(), pipeline.functions.begin(), pipeline.functions.end());
    }
    std::cout << registry.root->name().view() << ".DataPool -\n";
    for (auto const& module : modules) {
        std::cout << module.registeredName << ' ' << module.moduleName << '\n';
    }
    std::cout << std::flush;
    return std::cout ? done : inputOrOutputFailed;
}

ExitCode checkRegistry(std::filesystem::path const& registry, BAS::LogSink& log, bool isJson) {
    WarningSink sink(log);
    auto const problems = findAllProblems(registry, sink);
    auto const& warnings = sink.warnings();
    if (isJson) {
        std::cout << jsonObject({{"Registry", quotedText(registry.string())},
                                 {"Problems", statusesJson(problems)},
                                 {"Warnings", statusesJson(warnings)}})
                  << std::endl;
    } else {
        std::cout << registry.string() << ": " << counted(problems.size(), "problem") << " found"
                  << (warnings.empty() ? "" : ", " + counted(warnings.size(), "warning"))
                  << std::endl;
    }
    return !std::cout ? inputOrOutputFailed : problems.empty() ? done : startFailed;
}

} // namespace host
