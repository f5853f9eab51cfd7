// Writes the messages of one partition in order, each at a known sequence. What isn't acknowledged
// is kept; after an error the stream itself tells what is there, and the rest is sent again. Used
// by one thread, but for acknowledgements.
#pragma once

#include "EdrMessage.h"
#include "base/Notification.h"

#include <atomic>
#include <deque>
#include <optional>

namespace stream {

// The stream lacks messages that it had acknowledged: the source must be read again.
struct AcknowledgedLost {};

class PartitionWriter {
public:
    // Asks the stream where to go on. Connection and stop must outlive the writer. Throws a
    // BAS::Status when there is no such stream or no answer.
    PartitionWriter(Connection& connection, host::StreamConfiguration const& stream,
                    std::uint64_t partition, host::Notification const& stop);

    // The headers of the last message; nothing when the stream never had one, or when it has gone.
    std::optional<SourcePlace> const& last() const noexcept { return lastM; }
    bool hasLastGone() const noexcept { return sentM > 0 && !lastM; }

    // Sends lines that end at the place; waits while too many messages are on their way. Throws
    // AcknowledgedLost, and a BAS::Status when somebody else writes to the stream, when the servers
    // don't permit it, or when stop is set while they don't answer.
    void send(std::string_view lines, SourcePlace const& place);
    // Waits until all is in the stream. Throws as send does.
    void finish();
    std::uint64_t messages() const noexcept { return messagesM; }

    // Any thread. Acknowledgements come in the order of the messages, unless one before is missing.
    void acknowledge(std::uint64_t sequence) noexcept;
    void fail() noexcept { hasFailedM = true; }

private:
    struct Sent {
        std::string data;
        SourcePlace place;
    };

    void transmit(Sent const& sent);
    void dropAcknowledged();
    void waitFor(std::size_t most);
    void recover();
    bool goOnFromStream();
    std::uint64_t lastInStream() const;
    void requireOwn(std::uint64_t last) const;
    std::optional<SourcePlace> placeOfMessage(std::uint64_t sequence) const;

    Connection& connectionM;
    host::Notification const& stopM;
    std::string pipelineM;
    std::string streamM;
    std::string subjectM;
    std::optional<SourcePlace> lastM;
    std::deque<Sent> onTheWayM;      // the first has the sequence after the acknowledged one
    std::uint64_t acknowledgedM = 0; // sequence up to which nothing is kept
    std::uint64_t sentM = 0;         // last sequence
    std::uint64_t messagesM = 0;
    std::atomic<std::uint64_t> acknowledgementM{0};
    std::atomic<bool> hasFailedM{false};
};

} // namespace stream
