#include "run/Service.h"

#include "base/Failures.h"
#include "base/MessageCatalogue.h"
#include "base/Poll.h"

#include <algorithm>

namespace host {

Service::Service(Host& host, CommandExecutor& executor, Notification& stop, ProgressLine* progress)
    : hostM(host), executorM(executor), stopM(stop), progressM(progress) {
    openDirectories();
}

void Service::openDirectories() {
    std::vector<BAS::Status> problems;
    for (auto const& pipeline : hostM.pipelines()) {
        try {
            if (pipeline->configuration().stream) {
                pipeline->openStream(hostM.streamLibrary());
            }
            pipeline->openInputDirectory();
        } catch (BAS::Status& status) {
            status.setObjectName(pipeline->configuration().registeredName);
            problems.push_back(status);
        }
    }
    for (auto const& pipeline : hostM.pipelines()) {
        if (problems.empty() && pipeline->configuration().stream &&
            pipeline->configuration().stream->takesCommands) {
            openStreamCommands(*pipeline);
        }
    }
    try {
        auto const& configuration = hostM.configuration();
        for (auto& inlet : commandInlets(configuration)) {
            commandsM.push_back({std::make_unique<CommandDirectory>(
                std::move(inlet), configuration.keepResults,
                [this](Command const& command, CommandDirectory::Done done) {
                    return executorM.execute(command, std::move(done));
                },
                hostM.log())});
        }
    } catch (BAS::Status const& status) {
        problems.push_back(status);
    }
    if (!problems.empty()) {
        throw StartFailure{std::move(problems)};
    }
}

void Service::openStreamCommands(PipelineRunner const& pipeline) {
    auto const& configuration = pipeline.configuration();
    streamCommandsM.emplace_back(
        configuration.stream->name,
        hostM.streamLibrary().takeCommands(configuration, streamCommandsBellM, hostM.log()),
        [&pipeline] {
            std::vector<std::uint64_t> owned;
            for (auto const& partition : pipeline.state().partitions) {
                if (partition.isOwned) {
                    owned.push_back(partition.number);
                }
            }
            return owned;
        },
        [this](Command const& command, CommandDirectory::Done done) {
            return executorM.execute(command, std::move(done));
        },
        hostM.log());
}

void Service::run() {
    {
        auto const threads = startPipelines(); // waited for at the end of the block
        try {
            serveUntilEnd();
        } catch (...) {
            stopM.set(); // otherwise they went on, without anybody who takes commands
            throw;
        }
    }
    if (progressM != nullptr) {
        progressM->clear();
    }
    finishCommands();
}

bool Service::hasFailed() const noexcept {
    return std::any_of(commandsM.begin(), commandsM.end(), [](auto const& commands) {
        return commands.hasFailed || commands.directory->hasFailed();
    });
}

std::vector<std::jthread> Service::startPipelines() {
    runningM = hostM.pipelines().size();
    std::vector<std::jthread> threads;
    threads.reserve(runningM);
    for (auto const& pipeline : hostM.pipelines()) {
        threads.emplace_back([this, &pipeline] {
            pipeline->run(stopM);
            if (--runningM == 0) {
                endedM.set();
            }
        });
    }
    return threads;
}

void Service::serveUntilEnd() {
    while (!stopM.isSet() && !endedM.isSet()) {
        bool const doMoreWait = takeCommands();
        executorM.finishReloads();
        auto wakeUp = doMoreWait ? std::chrono::steady_clock::now() : nextSweep();
        if (progressM != nullptr) {
            auto const redraw = progressM->draw();
            wakeUp = wakeUp ? std::min(*wakeUp, redraw) : redraw;
        }
        waitForAny({stopM.descriptor(), endedM.descriptor(), executorM.descriptor(),
                    commandsDescriptor(0), commandsDescriptor(1), streamCommandsBellM.descriptor()},
                   wakeUp);
    }
    if (stopM.isSet()) {
        hostM.log().write(makeStatus(BAS::Status::notice, {}, "MSG_STOPPING", {}));
    }
}

// After the end of the inputs or a signal.
void Service::finishCommands() {
    bool doMoreWait = takeCommands();
    while ((doMoreWait || executorM.isReloading()) && !stopM.isSet()) {
        if (!doMoreWait) {
            waitForAny({stopM.descriptor(), executorM.descriptor()});
        }
        executorM.finishReloads();
        doMoreWait = takeCommands();
    }
    while (executorM.isReloading()) { // the command file may continue with another reload
        executorM.stopReloads();
    }
}

// Whoever fills one directory, or sends many commands, doesn't keep the others from being looked
// at.
bool Service::takeCommands() {
    bool doMoreWait = false;
    for (auto& commands : commandsM) {
        doMoreWait = takeCommands(commands) || doMoreWait;
    }
    for (auto& commands : streamCommandsM) {
        doMoreWait = commands.takeSome(stopM) || doMoreWait;
    }
    return doMoreWait;
}

// Without the directory the host continues, but takes no more commands from there.
bool Service::takeCommands(Commands& commands) {
    if (commands.hasFailed) {
        return false;
    }
    try {
        return commands.directory->takeSome(stopM);
    } catch (BAS::Status const& status) {
        commands.hasFailed = true;
        hostM.log().write(makeStatus(BAS::Status::critical, {}, "ERR_COMMANDS_STOPPED",
                                     {commands.directory->path().string(), messageText(status)}));
        return false;
    }
}

int Service::commandsDescriptor(std::size_t number) const {
    bool const isUsed = number < commandsM.size() && !commandsM[number].hasFailed;
    return isUsed ? commandsM[number].directory->descriptor() : -1;
}

Deadline Service::nextSweep() const {
    Deadline next;
    for (auto const& commands : commandsM) {
        auto const sweep = commands.directory->nextSweep();
        if (!commands.hasFailed) {
            next = next ? std::min(*next, sweep) : sweep;
        }
    }
    return next;
}

} // namespace host
