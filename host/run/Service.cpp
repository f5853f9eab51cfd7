#include "run/Service.h"

#include "base/Failures.h"
#include "base/MessageCatalogue.h"
#include "base/Poll.h"

namespace host {

Service::Service(Host& host, CommandExecutor& executor, Notification const& stop,
                 ProgressLine* progress)
    : hostM(host), executorM(executor), stopM(stop), progressM(progress) {
    openDirectories(host.configuration().commandDirectory);
}

void Service::openDirectories(std::optional<std::filesystem::path> const& commandDirectory) {
    std::vector<BAS::Status> problems;
    for (auto const& pipeline : hostM.pipelines()) {
        try {
            pipeline->openInputDirectory();
        } catch (BAS::Status& status) {
            status.setObjectName(pipeline->configuration().registeredName);
            problems.push_back(status);
        }
    }
    try {
        if (commandDirectory) {
            commandsM = std::make_unique<CommandDirectory>(
                *commandDirectory,
                [this](Command const& command, CommandDirectory::Done done) {
                    return executorM.execute(command, std::move(done));
                },
                hostM.log());
        }
    } catch (BAS::Status const& status) {
        problems.push_back(status);
    }
    if (!problems.empty()) {
        throw StartFailure{std::move(problems)};
    }
}

void Service::run() {
    {
        auto const threads = startPipelines(); // waited for at the end of the block
        serveUntilEnd();
    }
    if (progressM != nullptr) {
        progressM->clear();
    }
    finishCommands();
}

bool Service::hasFailed() const noexcept {
    return haveCommandsFailedM || (commandsM != nullptr && commandsM->hasFailed());
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
        takeCommands();
        executorM.finishReloads();
        Deadline redraw;
        if (progressM != nullptr) {
            redraw = progressM->draw();
        }
        waitForAny({stopM.descriptor(), endedM.descriptor(), executorM.descriptor(),
                    commandsM == nullptr || haveCommandsFailedM ? -1 : commandsM->descriptor()},
                   redraw);
    }
    if (stopM.isSet()) {
        hostM.log().write(makeStatus(BAS::Status::notice, {}, "MSG_STOPPING", {}));
    }
}

// After the end of the inputs or a signal.
void Service::finishCommands() {
    takeCommands();
    while (executorM.isReloading() && !stopM.isSet()) {
        waitForAny({stopM.descriptor(), executorM.descriptor()});
        executorM.finishReloads();
        takeCommands();
    }
    while (executorM.isReloading()) { // the command file may continue with another reload
        executorM.stopReloads();
    }
}

// Without the directory the host continues, but takes no more commands.
void Service::takeCommands() {
    if (commandsM == nullptr || haveCommandsFailedM) {
        return;
    }
    try {
        commandsM->takeAll(stopM);
    } catch (BAS::Status const& status) {
        haveCommandsFailedM = true;
        hostM.log().write(
            makeStatus(BAS::Status::critical, {}, "ERR_COMMANDS_STOPPED",
                       {hostM.configuration().commandDirectory->string(), messageText(status)}));
    }
}

} // namespace host
