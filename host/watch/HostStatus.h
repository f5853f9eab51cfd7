// How a host is doing at one moment, gathered without waiting for batches or commands.
#pragma once

#include "DAT/Reloadable.h"
#include "run/CommandExecutor.h"
#include "run/Host.h"
#include "watch/RateMeter.h"

#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace host {

struct PlugInAtWork {
    std::string object; // registered name
    double seconds;     // since it was handed the batch
};

struct PipelineStatus {
    std::string name;
    std::string countBy; // path of the field by which details are counted; may be empty
    PipelineState state;
    double edrsPerSecond; // over the last minute
    std::optional<double> secondsSinceBatch;
    std::optional<PlugInAtWork> plugInAtWork;
};

struct ObjectStatus {
    std::string name;
    std::string kind;
    std::string moduleName; // of a module
    bool isValid;
    BAS::Status status; // without a message if none was ever set
    std::optional<DAT::LoadReport> load;
};

struct HostStatus {
    std::string version;
    std::filesystem::path registry;
    std::chrono::system_clock::time_point since; // the host has started
    std::chrono::system_clock::time_point time;  // of the status
    std::vector<PipelineStatus> pipelines;
    std::vector<ObjectStatus> objects;
    std::vector<JournalEntry> commandsInProgress;
    std::vector<JournalEntry> lastCommands;
};

// Used by one thread. Host and journal must outlive it, and no object of the host may come or go
// meanwhile.
class StatusGatherer {
public:
    StatusGatherer(Host const& host, CommandJournal const& journal,
                   std::filesystem::path const& registry);

    // More often than once a second for the rates to follow.
    HostStatus gather();

private:
    PipelineStatus pipelineStatus(PipelineRunner const& pipeline);

    Host const& hostM;
    CommandJournal const& journalM;
    std::filesystem::path registryM;
    std::chrono::system_clock::time_point sinceM = std::chrono::system_clock::now();
    std::map<PipelineRunner const*, RateMeter> ratesM;
};

} // namespace host
