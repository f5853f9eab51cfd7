// Which partitions of a stream this host owns. An owner is the value of a partition's key in a
// bucket whose entries expire; this host's is refreshed at a third of that time by a thread that
// also copies places to a second bucket once a second, from where another host goes on.
#pragma once

#include "Connection.h"
#include "StreamPlaces.h"

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>

namespace BAS {
class LogSink;
}

namespace stream {

inline constexpr std::chrono::seconds leaseTime{5};

// Of the machine, the process and the moment: no other caller has it.
std::string processName();

class Leases {
public:
    // Begins to take the partitions. Everything given must outlive the object; statuses have the
    // pipeline's registered name. Throws NoServer, or a BAS::Status when the buckets aren't there.
    Leases(Connection const& connection, host::StreamConfiguration const& stream,
           std::string const& pipeline, BAS::LogSink& log);
    // Gives the partitions up, so that another host can take them at once, and goes on where this
    // one stands. As long as servers don't answer, it tries until the leases end.
    ~Leases();

    std::string const& owner() const noexcept { return ownerM; }

    // The number of the times that this host took the partition, as long as no other host can have
    // taken it since. Any thread.
    std::optional<std::uint64_t> term(std::uint64_t partition) const;
    // The place that the last owner copied. Throws NoServer, or a BAS::Status when the servers
    // don't permit to ask.
    std::optional<StreamPlace> copiedPlace(std::uint64_t partition) const;
    // Has the place, which was reached in that term, copied within a second, unless the term ends
    // before: whoever has the next one begins by copying. Any thread.
    void copy(std::uint64_t partition, std::uint64_t term, StreamPlace const& place);

private:
    using Clock = std::chrono::steady_clock;

    struct Lease {
        std::uint64_t revision = 0; // of the bucket's entry, if it is this host's; else 0
        Clock::time_point refresh;  // when that is due, or the next try to take it
        Clock::time_point end;      // from then on another host may have taken it
        std::uint64_t term = 0;
        std::string waitsFor; // the owner that was logged
    };
    struct ReachedPlace {
        std::uint64_t term = 0;
        StreamPlace place;
    };

    void keepAll();
    void keep(std::uint64_t partition, Lease& lease);
    bool write(std::uint64_t partition, Lease& lease);
    bool mayBeOwn(std::uint64_t partition, Lease& lease);
    void reportOwner(std::uint64_t partition, Lease& lease, std::string const& owner);
    bool copyPlaces();
    bool ownsAny() const;
    bool isClosed() const;
    bool waitUntil(Clock::time_point time);

    Connection const& connectionM;
    host::StreamConfiguration const& streamM;
    std::string pipelineM;
    BAS::LogSink& logM;
    std::string ownerM;
    Bucket bucketM;
    Bucket placesM;
    mutable std::mutex lockM;
    std::condition_variable changedM;
    std::map<std::uint64_t, Lease> leasesM; // ends and terms are guarded by the lock
    std::map<std::uint64_t, ReachedPlace> toCopyM;
    bool isClosedM = false;
    std::jthread keeperM;
};

} // namespace stream
