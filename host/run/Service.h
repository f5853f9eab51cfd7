// Runs a host: every pipeline in a thread of its own, while the calling thread takes commands one
// after the other and shows the progress.
#pragma once

#include "base/Poll.h"
#include "commands/CommandDirectory.h"
#include "run/CommandExecutor.h"
#include "run/Host.h"
#include "run/ProgressLine.h"
#include "run/StreamCommandTaker.h"

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace host {

class Service {
public:
    // Takes the directories of the pipelines and of the commands for this host alone. Host,
    // executor and stop must outlive the service; the progress line may be null. Throws a
    // StartFailure when a directory can't be used.
    Service(Host& host, CommandExecutor& executor, Notification& stop, ProgressLine* progress);

    // Returns when all inputs have ended, or, once stop is set, when the batches and the command in
    // progress are finished. Commands that wait when the inputs end are carried out; those that
    // wait when stop is set stay, and reloads are abandoned. Sets stop when an exception leaves it,
    // which the pipelines don't outlive.
    void run();

    // A command's result couldn't be written, or the command directory failed.
    bool hasFailed() const noexcept;

private:
    struct Commands {
        std::unique_ptr<CommandDirectory> directory;
        bool hasFailed = false; // and nothing is taken from there any more
    };

    void openDirectories();
    void openStreamCommands(PipelineRunner const& pipeline);
    std::vector<std::jthread> startPipelines();
    void serveUntilEnd();
    // Both take some, and return whether more wait.
    bool takeCommands();
    bool takeCommands(Commands& commands);
    // The one of that number; -1 when it is unused.
    int commandsDescriptor(std::size_t number) const;
    Deadline nextSweep() const;
    void finishCommands();

    Host& hostM;
    CommandExecutor& executorM;
    Notification& stopM;
    ProgressLine* progressM;
    std::vector<Commands> commandsM;
    Bell streamCommandsBellM; // rung when one of the following has a command
    std::vector<StreamCommandTaker> streamCommandsM;
    std::atomic<std::size_t> runningM{0}; // pipelines
    Notification endedM;                  // all pipelines have
};

} // namespace host
