// Reads the partitions of a stream as one source of EDRs. A thread for each partition fetches
// messages ahead, in order, through a consumer without acknowledgements that is made anew from the
// next sequence whenever anything is odd; what is fetched and not yet read is bounded.
#pragma once

#include "Connection.h"
#include "EdrMessage.h"
#include "StreamPlaces.h"
#include "base/Notification.h"
#include "input/EdrSource.h"
#include "input/PortionFiller.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace stream {

// Knows which partitions a reader may read, and from where.
class PartitionKeeper {
public:
    struct Start {
        StreamPlace place;
        std::uint64_t warmUp = 0; // messages before it that are read again
    };

    // Waits until the host may read from the partition; nothing once ended says so. Called on the
    // partition's thread, as the next one. Throws a BAS::Status when it never may.
    virtual std::optional<Start> begin(std::uint64_t partition,
                                       std::function<bool()> const& ended) = 0;
    // Takes note of the messages that the partition is known to have; the first one is 0 when that
    // isn't known.
    virtual void noteRange(std::uint64_t partition, std::uint64_t first, std::uint64_t last) = 0;
    // Whether a partition with that last message still has all that came before the next place;
    // areHeld is false soon when it doesn't.
    virtual bool hasAll(std::uint64_t partition, StreamPlace const& next, std::uint64_t last) = 0;
    // False, from then on, once a partition that was begun may be another host's.
    virtual bool areHeld() const = 0;

protected:
    ~PartitionKeeper() = default;
};

class StreamReader : public host::EdrSource {
public:
    // All that is given by reference must outlive the reader; stop ends the waiting for messages.
    StreamReader(Connection& connection, host::StreamConfiguration const& stream,
                 host::PipelineConfiguration const& pipeline, host::EdrLineParser& parser,
                 host::Notification const& stop, PartitionKeeper& keeper);
    ~StreamReader() override;

    void read(host::InputPortion& portion) noexcept override;
    void abandon() noexcept override;

private:
    using Clock = std::chrono::steady_clock;

    struct Partition {
        std::uint64_t number = 0;
        std::string name; // of its stream
        // With the lock:
        std::size_t queuedBytes = 0;
        // Messages that were read, which the partition's thread destroys, many at a time: each may
        // wake a thread of the library.
        std::vector<Message> finished;
        std::condition_variable changed; // there is room, or nothing is to be read any more
    };
    struct Item {
        Partition* partition = nullptr;
        std::uint64_t sequence = 0;
        std::uint64_t missing = 0;   // messages before it
        std::uint64_t skipLines = 0; // that are processed
        Message message;
        std::string encoding; // of its data

        std::string_view data() const noexcept;
        std::size_t bytes() const noexcept;
    };
    // Of a partition's thread.
    struct Fetching {
        Subscription subscription;
        bool isNew = true;    // nothing has come through the subscription yet
        bool hasMore = false; // the last message said so
        std::size_t idleTurns = 0;
        bool isOverdue = false; // something is there that hasn't come
        StreamPlace next;
        std::uint64_t warmUp = 0;
        std::optional<Clock::time_point> goneSince; // when the servers no longer knew the stream
    };

    void fetchAhead(Partition& partition);
    bool subscribe(Partition const& partition, Fetching& fetching);
    void requireStream(Partition const& partition, jsStreamInfo const* info,
                       Fetching& fetching) const;
    bool fetch(Partition& partition, Fetching& fetching);
    bool accept(Partition const& partition, Fetching& fetching, Message message,
                std::vector<Item>& items);
    bool waitForRoom(Partition& partition);
    void put(Partition& partition, std::vector<Item> items);
    bool isServed(Partition const& partition, Fetching& fetching);
    StreamInfo askForState(Partition const& partition);
    void fail(std::exception_ptr failure);
    bool pause(Partition& partition);
    bool isComplete(host::InputPortion const& portion) const noexcept;
    bool take(bool mayWait);
    void open(host::InputPortion& portion);
    void decode(host::InputPortion& portion);
    void keepRest();
    void takeLine(host::InputPortion& portion);
    host::LineOrigin origin() const;

    Connection& connectionM;
    host::StreamConfiguration const& streamM;
    host::PipelineConfiguration const& pipelineM;
    host::Notification const& stopM;
    PartitionKeeper& keeperM;
    host::PortionFiller fillerM;
    std::deque<Partition> partitionsM;
    std::mutex lockM;
    std::condition_variable filledM; // there is a message, or a failure
    std::deque<Item> queueM;
    std::exception_ptr failureM; // of a partition's thread
    bool isClosedM = false;
    // Of the reading thread: the message that is being read.
    Item itemM;
    MessageDecoder decoderM;
    std::string_view textM; // in the portion, or own
    bool isTextInPortionM = false;
    std::string ownTextM;
    std::size_t atM = 0; // in the text
    std::uint64_t lineM = 0;
    host::InputPlace endM;
    bool isEndDueM = false; // no EDR ends there, so that the portion has to
    std::uint64_t bytesReadM = 0;
    bool isPauseDueM = false;           // a message came since the last pause
    std::vector<std::jthread> threadsM; // of the partitions; they use all of the above
};

} // namespace stream
