// Shows how the host is doing, from a thread of its own that waits neither for batches nor for
// commands: writes the status file every second and when a command begins or ends, the metrics file
// every ten seconds, and has the logs opened again when that is asked for.
#pragma once

#include "base/Bell.h"
#include "base/Notification.h"
#include "watch/HostStatus.h"
#include "watch/StatusFile.h"

#include <functional>
#include <optional>
#include <thread>

namespace host {

// Where a host with that configuration shows its status, if anywhere.
std::optional<std::filesystem::path> statusFileOf(HostConfiguration const& configuration);

class Watcher {
public:
    // What is given stays the caller's and must outlive the watcher. reopenLogs is called in its
    // thread when reopen rings. Throws a BAS::Status when a running host has the status file.
    Watcher(Host& host, CommandJournal& journal, std::filesystem::path const& registry,
            Bell& reopen, std::function<void()> reopenLogs);
    // Writes the metrics once more, and removes the status file.
    ~Watcher();
    Watcher(Watcher const&) = delete;
    Watcher& operator=(Watcher const&) = delete;

private:
    // A file that can't be written is logged once, and again when it could be meanwhile.
    struct Output {
        std::function<void(HostStatus const&)> write;
        std::chrono::seconds period;
        bool isForCommands; // shows each command
        std::chrono::steady_clock::time_point next = {};
        bool isFailing = false;
    };

    void watch();
    void writeDue();
    void write(Output& output, HostStatus const& status);

    Host& hostM;
    CommandJournal& journalM;
    StatusGatherer gathererM;
    Bell& reopenM;
    std::function<void()> reopenLogsM;
    std::optional<StatusFile> statusFileM;
    std::vector<Output> outputsM;
    Notification endM;
    std::jthread threadM;
};

} // namespace host
