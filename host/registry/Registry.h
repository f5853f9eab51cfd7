// The registry file: the configuration of the host, and the tree of texts that the registered
// objects read.
#pragma once

#include "BAS/RegistryEntry.h"
#include "BAS/Status.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace host {

struct ModuleConfiguration {
    std::string registeredName;    // "<root>.DataPool.<key>.Module" and the like
    std::string moduleName;        // names the library and its entry
    std::filesystem::path library; // empty: the library is looked for on the module path
};

// An input and the file for its rejected lines.
struct InputConfiguration {
    std::filesystem::path file; // "-" is standard input
    std::filesystem::path rejectFile;
    std::optional<int> descriptor = {}; // of the file, if it is open already; stays its owner's
};

// A stream on servers, and the part of it that this host reads.
struct StreamConfiguration {
    std::string name;
    std::vector<std::string> servers; // "nats://host:port" or "tls://host:port"
    std::vector<std::uint64_t> partitions;
    std::size_t partitionCount = 0;                   // of the whole stream
    std::optional<std::filesystem::path> credentials; // or user and password file
    std::string user;
    std::optional<std::filesystem::path> passwordFile;
    std::optional<std::filesystem::path> certificateAuthority; // the system's without it
    std::string inboxPrefix; // of the subjects of answers; the client library's without it
    std::filesystem::path stateDirectory;
    std::size_t warmUp = 0;     // messages of each partition that are read again at the start
    bool takesCommands = false; // those that an operator gives all hosts

    // Whether connections are secured: all of them, when one server says so.
    bool isSecure() const {
        return std::any_of(servers.begin(), servers.end(),
                           [](std::string const& server) { return server.starts_with("tls://"); });
    }
};

struct PipelineConfiguration {
    std::string name;
    std::string registeredName; // "<root>.Pipelines.<name>"
    std::filesystem::path edrDescription;
    std::size_t batchSize = 100;
    std::size_t maxLineLength = std::size_t{1} << 20; // bytes, without the line end
    std::vector<InputConfiguration> inputs;
    std::optional<std::filesystem::path> inputDirectory; // instead of single inputs
    std::optional<StreamConfiguration> stream;           // instead of files
    std::optional<std::filesystem::path> log;            // the process log without it
    std::string countBy;                                 // path of an EDR field; may be empty
    std::vector<ModuleConfiguration> functions;
};

struct HostConfiguration {
    std::filesystem::path directory;                 // of the registry file
    std::optional<std::filesystem::path> processLog; // standard error without it
    std::optional<std::filesystem::path> commandDirectory;
    std::size_t stopTimeout = 5; // seconds that a command has once the host is to end
    std::size_t keepResults = 7; // days, for those that nobody fetches
    std::string commandGroup;    // whose members may give commands; empty: there is none
    std::optional<std::filesystem::path> groupReports; // directory of the reports that they get
    std::optional<std::filesystem::path> statusFile;   // in the command directory without it
    std::optional<std::filesystem::path> metricsFile;
    std::size_t metricsMode = 0644;        // of the file
    std::size_t longestBatchSeconds = 300; // within a plug-in, before the host counts as stuck
    std::vector<ModuleConfiguration> dataPool;
    std::vector<PipelineConfiguration> pipelines;
};

struct Registry {
    HostConfiguration configuration;
    std::unique_ptr<BAS::RegistryEntry> root;
};

// The entry with the keys of a registered object, or null.
BAS::RegistryEntry const* subtreeOf(Registry const& registry, BAS::String const& registeredName);

// Reads and checks the whole file; all paths are absolute. Throws a StartFailure with all problems
// of the file and their places.
Registry readRegistry(std::filesystem::path const& file);

// The same for a check: adds the problems of the file and leaves out modules without a name and
// pipelines without an EDR description. Throws when the file isn't a registry at all.
Registry readRegistry(std::filesystem::path const& file, std::vector<BAS::Status>& problems);

} // namespace host
