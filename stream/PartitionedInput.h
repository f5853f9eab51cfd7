// The stream of a pipeline on this host: its connection, the partitions that the host owns, their
// places and what was rejected. The partitions' threads begin, the pipeline's thread does the rest.
#pragma once

#include "Leases.h"
#include "StreamReader.h"
#include "input/RejectFile.h"
#include "input/StreamLibrary.h"

#include <map>
#include <mutex>
#include <set>

namespace stream {

class PartitionedInput : public host::StreamInput, public PartitionKeeper {
public:
    // Pipeline, description and log must outlive the object. Throws a BAS::Status when the state
    // directory can't be used, or when the servers turn the host away.
    PartitionedInput(host::PipelineConfiguration const& pipeline,
                     EDR::Description const& description, BAS::LogSink& log);

    std::unique_ptr<host::EdrSource> open(host::Notification const& stop) override;
    std::vector<host::PartitionState> state() const override;
    void reject(host::InputPlace const& end, std::string_view line) override;
    bool mayProcess() override;
    void keep(std::vector<host::InputPlace> const& places) override;

    // Of the partitions' threads, but for areHeld, which is any thread's.
    std::optional<Start> begin(std::uint64_t partition,
                               std::function<bool()> const& ended) override;
    void noteRange(std::uint64_t partition, std::uint64_t first, std::uint64_t last) override;
    bool hasAll(std::uint64_t partition, StreamPlace const& next, std::uint64_t last) override;
    bool areHeld() const override;

private:
    enum class Loss {
        none,
        suspected, // perhaps a server only tells of an older state
        certain
    };

    bool connect();
    std::optional<Start> startOf(std::uint64_t partition, std::uint64_t term);
    Loss lossOf(std::uint64_t partition, StreamPlace const& place, std::uint64_t last);
    void goBack(std::string const& name, std::uint64_t partition, StreamPlace& place,
                std::uint64_t last);
    std::filesystem::path rejectFile(std::uint64_t partition) const;

    host::PipelineConfiguration const& pipelineM;
    host::StreamConfiguration const& streamM;
    host::EdrLineParser parserM;
    BAS::LogSink& logM;
    std::unique_ptr<Connection> connectionM; // null until a server was there
    bool isWaitReportedM = false;
    mutable std::mutex lockM;        // for what follows
    std::unique_ptr<Leases> leasesM; // set once, by the pipeline's thread
    StreamPlaces placesM;
    struct Reading {
        StreamPlace place;
        std::uint64_t term = 0; // of the lease; 0 once all must begin again
        // Messages that the partition is known to have.
        std::uint64_t first = 0;
        std::uint64_t last = 0;
    };
    std::map<std::uint64_t, Reading> readingM;
    std::set<std::uint64_t> readBeforeM; // partitions that this process began to read
    // Since when partitions seem to lack messages.
    std::map<std::uint64_t, std::chrono::steady_clock::time_point> lossesM;
    std::map<std::uint64_t, host::RejectFile> rejectsM;
};

} // namespace stream
