#include "PartitionWriter.h"

#include "StreamNames.h"
#include "StreamShape.h"

#include <chrono>
#include <thread>

namespace stream {

namespace {

constexpr std::size_t window = 64;              // messages on their way
constexpr std::int64_t acknowledgeTime = 3'000; // milliseconds
constexpr auto pollInterval = std::chrono::microseconds(100);
constexpr auto retryInterval = std::chrono::milliseconds(200);
// So long a stream without a leader is waited for at the start.
constexpr auto startTime = std::chrono::seconds(30);
// For so long after an election a server may tell of an older state of a stream.
constexpr auto staleTime = std::chrono::seconds(10);

} // namespace

PartitionWriter::PartitionWriter(Connection& connection, host::StreamConfiguration const& stream,
                                 std::uint64_t partition, host::Notification const& stop)
    : connectionM(connection), stopM(stop), pipelineM(stream.name),
      streamM(streamName(stream.name, partition)), subjectM(subject(stream.name, partition)) {
    auto const giveUp = std::chrono::steady_clock::now() + startTime;
    StreamInfo info;
    for (bool isKnown = false; !isKnown;) {
        try {
            info = connection.streamInfo(streamM);
            isKnown = true;
        } catch (NoServer const&) {
            if (std::chrono::steady_clock::now() > giveUp || stop.isSet()) {
                throw;
            }
            std::this_thread::sleep_for(retryInterval);
        }
    }
    if (info == nullptr) {
        throw failure(pipelineM, "publishing to " + streamM,
                      "there is no such stream; 'pipeline-host stream create' makes it");
    }
    requirePartitionCount(stream, *info);
    sentM = acknowledgedM = acknowledgementM = info->State.LastSeq;
    if (sentM > 0) {
        lastM = placeOfMessage(sentM);
    }
}

// Nothing when there is no such message.
std::optional<SourcePlace> PartitionWriter::placeOfMessage(std::uint64_t sequence) const {
    natsMsg* found = nullptr;
    jsErrCode code = {};
    auto const status =
        js_GetMsg(&found, connectionM.jetStream(), streamM.c_str(), sequence, nullptr, &code);
    Message const message(found);
    if (status == NATS_NOT_FOUND) {
        return std::nullopt;
    }
    if (status != NATS_OK) {
        connectionM.fail("reading the last message of " + streamM, status);
    }
    return placeOf(found);
}

// A message can be taken although one before it wasn't: when another publisher's has come between,
// the sequence that it expects is there.
void PartitionWriter::acknowledge(std::uint64_t sequence) noexcept {
    auto const known = acknowledgementM.load();
    if (sequence == known + 1) {
        acknowledgementM = sequence;
    } else if (sequence > known) {
        hasFailedM = true;
    }
}

void PartitionWriter::send(std::string_view lines, SourcePlace const& place) {
    waitFor(window - 1);
    onTheWayM.push_back({compressed(lines), place});
    transmit(onTheWayM.back());
    ++messagesM;
}

void PartitionWriter::finish() {
    waitFor(0);
}

void PartitionWriter::transmit(Sent const& sent) {
    auto message = makeMessage(subjectM, sent.data, sent.place);
    jsPubOptions options;
    jsPubOptions_Init(&options);
    options.MaxWait = acknowledgeTime;
    options.ExpectLastSeq = sentM;
    options.ExpectNoMessage = sentM == 0; // a last sequence of 0 counts as none
    auto* raw = message.release();
    if (js_PublishMsgAsync(connectionM.jetStream(), &raw, &options) != NATS_OK) {
        natsMsg_Destroy(raw);
        hasFailedM = true;
    }
    ++sentM;
}

void PartitionWriter::dropAcknowledged() {
    auto const acknowledged = acknowledgementM.load();
    while (acknowledgedM < acknowledged && !onTheWayM.empty()) {
        onTheWayM.pop_front();
        ++acknowledgedM;
    }
}

// Until at most so many are on their way.
void PartitionWriter::waitFor(std::size_t most) {
    for (;;) {
        dropAcknowledged();
        if (hasFailedM) {
            recover();
        } else if (onTheWayM.size() <= most) {
            return;
        } else {
            std::this_thread::sleep_for(pollInterval);
        }
    }
}

// Waits for everything that is on its way, so that nothing of it comes after what is sent again.
void PartitionWriter::recover() {
    auto const giveUp = std::chrono::steady_clock::now() + staleTime;
    for (;;) {
        jsPubOptions options;
        jsPubOptions_Init(&options);
        options.MaxWait = acknowledgeTime + 2'000;
        js_PublishAsyncComplete(connectionM.jetStream(), &options);
        hasFailedM = false;
        dropAcknowledged();
        if (auto const reason = connectionM.refusal()) {
            throw failure(pipelineM, "publishing to " + streamM, *reason);
        }
        if (goOnFromStream()) {
            return;
        }
        if (std::chrono::steady_clock::now() > giveUp) {
            throw AcknowledgedLost();
        }
        std::this_thread::sleep_for(retryInterval);
    }
}

// False when the stream has less than was acknowledged, perhaps only as told by a stale server.
// While no server answers it goes on to ask.
bool PartitionWriter::goOnFromStream() {
    for (;;) {
        try {
            auto const last = lastInStream();
            if (last < acknowledgedM) {
                return false;
            }
            requireOwn(last);
            acknowledgementM = sentM = last;
            break;
        } catch (NoServer const&) {
            connectionM.requireOpen();
            if (stopM.isSet()) {
                throw;
            }
            std::this_thread::sleep_for(retryInterval);
        }
    }
    dropAcknowledged();
    for (auto const& sent : onTheWayM) {
        transmit(sent);
    }
    return true;
}

std::uint64_t PartitionWriter::lastInStream() const {
    auto const info = connectionM.streamInfo(streamM);
    if (info == nullptr) {
        throw AcknowledgedLost();
    }
    return info->State.LastSeq;
}

// Throws a BAS::Status when the messages after the acknowledged ones aren't those on their way.
void PartitionWriter::requireOwn(std::uint64_t last) const {
    for (auto sequence = acknowledgedM + 1; sequence <= last; ++sequence) {
        auto const next = static_cast<std::size_t>(sequence - acknowledgedM - 1);
        bool isOwn = next < onTheWayM.size();
        if (isOwn) {
            auto const place = placeOfMessage(sequence);
            isOwn = !place || *place == onTheWayM[next].place; // it may have expired
        }
        if (!isOwn) {
            throw failure(pipelineM, "publishing to " + streamM,
                          "another publisher writes to it; what was sent last isn't all there");
        }
    }
}

} // namespace stream
