// Writes the messages of one partition in order, each at a known sequence. What isn't acknowledged
// is kept; after an error the stream itself tells what is there, and the rest is sent again. Used
// by one thread, but for acknowledgements.
#pragma once

#include "BAS/LogSink.h"
#include "EdrMessage.h"
#include "GracePeriod.h"
#include "SourceLines.h"

#include <atomic>
#include <chrono>
#include <deque>
#include <mutex>
#include <optional>

namespace stream {

// The stream lacks messages that it had acknowledged: the source must be read again.
struct AcknowledgedLost {};

class PartitionWriter {
public:
    // Asks the stream where to go on. Everything given must outlive the writer. The log gets that
    // servers are waited for. Throws a BAS::Status when there is no such stream or no answer, and
    // PublishingStopped.
    PartitionWriter(Connection& connection, host::StreamConfiguration const& stream,
                    std::uint64_t partition, GracePeriod& stop, BAS::LogSink& log);

    // The headers of the last message; nothing when the stream never had one, or when it has gone.
    std::optional<SourcePlace> const& last() const noexcept { return lastM; }
    bool hasLastGone() const noexcept { return sentM > 0 && !lastM; }
    // The line up to which messages are missing before the last ones of its source, as another
    // publisher's came between. Throws as the constructor does.
    std::optional<std::uint64_t> missingUpTo() const;

    // Sends lines, as one message unless that is larger than the servers take; waits while too many
    // messages are on their way. Throws AcknowledgedLost; PublishingStopped, at the latest when the
    // grace is over; and a BAS::Status when somebody else writes to the stream, when the servers
    // don't permit it or go on refusing it, and when they don't take messages as large as a line.
    void send(SourceLines const& lines);
    // Waits until all is in the stream. Throws as send does.
    void finish();
    // What is known to be in the stream.
    std::uint64_t messages() const noexcept { return messagesM; }
    std::uint64_t lines() const noexcept { return linesM; }

    // Any thread. Acknowledgements come in the order of the messages, unless one before is missing.
    void acknowledge(std::uint64_t sequence) noexcept;
    void fail(jsPubAckErr const& error) noexcept;

private:
    struct Sent {
        std::string data;
        SourcePlace place; // of its last line
        std::size_t lines = 0;
    };
    using Clock = std::chrono::steady_clock;
    struct Report {
        std::string reason;
        bool isRefusal = false; // the servers said it, else they didn't answer
    };
    // Since the servers last took a message, or couldn't be reached.
    struct Trouble {
        Report report;
        std::optional<Clock::time_point> begin;
        bool isReported = false;
    };

    template <class Ask>
    auto untilAnswered(Ask const& ask) const;
    std::string attempt() const;
    void findLast(host::StreamConfiguration const& stream);
    void sendPart(SourceLines const& all, std::size_t begin, std::size_t end);
    void requireRoom(Sent const& sent) const;
    bool hasRoom(Sent const& sent) const noexcept;
    void transmit(Sent const& sent);
    void dropAcknowledged();
    void waitFor(std::size_t most);
    void recover();
    void waitForReports();
    bool goOnFromStream();
    std::uint64_t lastInStream() const;
    void requireOwn(std::uint64_t last) const;
    std::optional<SourcePlace> placeOfMessage(std::uint64_t sequence) const;
    void hasFailed(std::string reason, bool isRefusal);
    Report takeReport();
    void bearTrouble();
    void warn(std::string const& reason);

    Connection& connectionM;
    GracePeriod& stopM;
    BAS::LogSink& logM;
    std::string pipelineM;
    std::string streamM;
    std::string subjectM;
    MessageEncoder encoderM;
    std::optional<SourcePlace> lastM;
    SourcePlace sentPlaceM;          // of the last one
    std::deque<Sent> onTheWayM;      // the first has the sequence after the acknowledged one
    std::uint64_t acknowledgedM = 0; // sequence up to which nothing is kept
    std::uint64_t acknowledgedAtFailureM = 0;
    std::uint64_t sentM = 0; // last sequence
    std::uint64_t messagesM = 0;
    std::uint64_t linesM = 0;
    std::atomic<std::uint64_t> acknowledgementM{0};
    std::atomic<bool> hasFailedM{false};
    std::mutex reportMutexM;
    Report reportM; // of the messages on their way
    Trouble troubleM;
};

} // namespace stream
