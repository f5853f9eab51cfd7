#include "PartitionWriter.h"

#include "StreamNames.h"
#include "StreamShape.h"
#include "base/MessageCatalogue.h"

#include <fmt/format.h>

#include <thread>
#include <utility>

namespace stream {

namespace {

constexpr std::size_t window = 64;              // messages on their way
constexpr std::int64_t acknowledgeTime = 3'000; // milliseconds
constexpr std::int64_t answerTime = 2'000;      // milliseconds; so long stop isn't looked at
constexpr std::int64_t reportInterval = 100;    // milliseconds
constexpr auto pollInterval = std::chrono::microseconds(100);
constexpr auto retryInterval = std::chrono::milliseconds(200);
// So long a stream without a leader is waited for at the start.
constexpr auto startTime = std::chrono::seconds(30);
// Servers that are waited for longer are reported.
constexpr auto quietTime = std::chrono::seconds(2);
// Servers that have refused a message, and take none for so long, go on doing so.
constexpr auto refusedTime = std::chrono::seconds(10);

// What servers also say when they elect, or against messages that were to come after a refused one.
bool isPassing(jsErrCode code) {
    return code == 0 || code == JSStreamWrongLastSequenceErr || code == JSClusterNotLeaderErr ||
           code == JSClusterNotAvailErr;
}

} // namespace

// What it asks the servers for, at the start.
template <class Ask>
auto PartitionWriter::untilAnswered(Ask const& ask) const {
    auto const giveUp = Clock::now() + startTime;
    for (;;) {
        try {
            return ask();
        } catch (NoServer const&) {
            if (stopM.isStopping()) {
                throw PublishingStopped();
            }
            if (Clock::now() > giveUp) {
                throw;
            }
            std::this_thread::sleep_for(retryInterval);
        }
    }
}

PartitionWriter::PartitionWriter(Connection& connection, host::StreamConfiguration const& stream,
                                 std::uint64_t partition, GracePeriod& stop, BAS::LogSink& log)
    : connectionM(connection), stopM(stop), logM(log), pipelineM(stream.name),
      streamM(streamName(stream.name, partition)), subjectM(subject(stream.name, partition)) {
    untilAnswered([&] { findLast(stream); });
}

void PartitionWriter::findLast(host::StreamConfiguration const& stream) {
    auto const info = connectionM.streamInfo(streamM, answerTime);
    if (info == nullptr) {
        throw failure(pipelineM, attempt(),
                      "there is no such stream; 'pipeline-host stream create' makes it");
    }
    requirePartitionCount(stream, *info);
    sentM = acknowledgedM = acknowledgedAtFailureM = acknowledgementM = info->State.LastSeq;
    if (sentM > 0) {
        lastM = placeOfMessage(sentM);
        sentPlaceM = lastM.value_or(SourcePlace{});
    }
}

// No more than a window can be missing before a message that came.
std::optional<std::uint64_t> PartitionWriter::missingUpTo() const {
    auto place = lastM;
    for (auto sequence = sentM; place && place->after != 0 && sequence + window > sentM;
         --sequence) {
        auto const before = untilAnswered([&] { return placeOfMessage(sequence - 1); });
        if (before && (before->source != place->source || before->line != place->after)) {
            return place->after;
        }
        place = before;
    }
    return std::nullopt;
}

// For messages of failures.
std::string PartitionWriter::attempt() const {
    return "publishing to " + streamM;
}

// Nothing when there is no such message.
std::optional<SourcePlace> PartitionWriter::placeOfMessage(std::uint64_t sequence) const {
    natsMsg* found = nullptr;
    jsErrCode code = {};
    jsOptions options;
    jsOptions_Init(&options);
    options.Wait = answerTime;
    auto const status =
        js_GetMsg(&found, connectionM.jetStream(), streamM.c_str(), sequence, &options, &code);
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

void PartitionWriter::fail(jsPubAckErr const& error) noexcept {
    hasFailed(error.ErrText, !isPassing(error.ErrCode));
}

void PartitionWriter::hasFailed(std::string reason, bool isRefusal) {
    std::lock_guard const lock(reportMutexM);
    if (isRefusal || !reportM.isRefusal) {
        reportM = {std::move(reason), isRefusal};
    }
    hasFailedM = true;
}

// Of a failure that has gained nothing, although a server tells of the stream. When none leads it,
// because too few are there, they say nothing against a message, and are waited for.
void PartitionWriter::bearTrouble() {
    auto const now = Clock::now();
    auto& [report, begin, isReported] = troubleM;
    begin = begin.value_or(now);
    if (report.isRefusal && now - *begin > refusedTime) {
        throw failure(pipelineM, attempt(), "the servers go on refusing it: " + report.reason);
    }
    if (now - *begin > quietTime && !std::exchange(isReported, true)) {
        warn(report.reason);
    }
}

void PartitionWriter::warn(std::string const& reason) {
    logM.write(
        host::makeStatus(BAS::Status::warning, {}, "ERR_STREAM_AWAITED", {pipelineM, reason}));
}

void PartitionWriter::send(SourceLines const& lines) {
    sendPart(lines, 0, lines.size());
}

void PartitionWriter::sendPart(SourceLines const& all, std::size_t begin, std::size_t end) {
    Sent sent = {encoderM.compressed(all.text(begin, end)), all.place(end - 1), end - begin};
    if (sent.lines > 1 && !hasRoom(sent)) {
        auto const middle = begin + sent.lines / 2;
        sendPart(all, begin, middle);
        sendPart(all, middle, end);
        return;
    }
    sent.place.after = sent.place.source == sentPlaceM.source ? sentPlaceM.line : 0;
    requireRoom(sent);
    waitFor(window - 1);
    sentPlaceM = sent.place;
    onTheWayM.push_back(std::move(sent));
    transmit(onTheWayM.back());
}

void PartitionWriter::finish() {
    waitFor(0);
}

bool PartitionWriter::hasRoom(Sent const& sent) const noexcept {
    auto const most = natsConnection_GetMaxPayload(connectionM.get());
    return sent.data.size() + mostHeaderBytes(sent.place) <= static_cast<std::size_t>(most);
}

// A server would close the connection, without end.
void PartitionWriter::requireRoom(Sent const& sent) const {
    if (!hasRoom(sent)) {
        throw failure(
            pipelineM, attempt(),
            fmt::format("{}line {} of '{}' takes {} bytes with its headers, and the servers take "
                        "at most {} (max_payload)",
                        sent.lines == 1 ? "" : fmt::format("{} lines up to ", sent.lines),
                        sent.place.line, sent.place.source,
                        sent.data.size() + mostHeaderBytes(sent.place),
                        natsConnection_GetMaxPayload(connectionM.get())));
    }
}

void PartitionWriter::transmit(Sent const& sent) {
    requireRoom(sent); // the next server may have another limit
    auto message = makeMessage(subjectM, sent.data, sent.place);
    jsPubOptions options;
    jsPubOptions_Init(&options);
    options.MaxWait = acknowledgeTime;
    options.ExpectLastSeq = sentM;
    options.ExpectNoMessage = sentM == 0; // a last sequence of 0 counts as none
    auto* raw = message.release();
    if (auto const status = js_PublishMsgAsync(connectionM.jetStream(), &raw, &options);
        status != NATS_OK) {
        natsMsg_Destroy(raw);
        hasFailed(failureText(status), false);
    }
    ++sentM;
}

void PartitionWriter::dropAcknowledged() {
    auto const acknowledged = acknowledgementM.load();
    while (acknowledgedM < acknowledged && !onTheWayM.empty()) {
        linesM += onTheWayM.front().lines;
        ++messagesM;
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
        } else if (stopM.isOver()) {
            throw PublishingStopped();
        } else {
            std::this_thread::sleep_for(pollInterval);
        }
    }
}

void PartitionWriter::recover() {
    waitForReports();
    hasFailedM = false;
    auto const failed = takeReport();
    dropAcknowledged();
    connectionM.requirePermitted(attempt());
    auto const giveUp = Clock::now() + staleTime;
    while (!goOnFromStream()) {
        if (stopM.isStopping()) {
            throw PublishingStopped();
        }
        if (Clock::now() > giveUp) {
            throw AcknowledgedLost();
        }
        std::this_thread::sleep_for(retryInterval);
    }
    bool const hasGained = std::exchange(acknowledgedAtFailureM, acknowledgedM) < acknowledgedM;
    if (hasGained) {
        troubleM = {};
    }
    if (failed.isRefusal || !troubleM.report.isRefusal) {
        troubleM.report = failed;
    }
    if (!hasGained) {
        bearTrouble();
        std::this_thread::sleep_for(retryInterval);
    }
}

PartitionWriter::Report PartitionWriter::takeReport() {
    std::lock_guard const lock(reportMutexM);
    return std::exchange(reportM, {});
}

// For everything that is on its way, so that nothing of it comes after what is sent again.
void PartitionWriter::waitForReports() {
    jsPubOptions options;
    jsPubOptions_Init(&options);
    options.MaxWait = reportInterval;
    auto const giveUp = Clock::now() + std::chrono::milliseconds(acknowledgeTime + 2'000);
    do {
        if (stopM.isStopping()) {
            throw PublishingStopped();
        }
    } while (js_PublishAsyncComplete(connectionM.jetStream(), &options) == NATS_TIMEOUT &&
             Clock::now() < giveUp);
}

// False when the stream has less than was acknowledged, perhaps only as told by a stale server.
// While no server answers it goes on to ask.
bool PartitionWriter::goOnFromStream() {
    auto const begin = Clock::now();
    for (bool isReported = false;;) {
        try {
            auto const last = lastInStream();
            if (last < acknowledgedM) {
                return false;
            }
            requireOwn(last);
            acknowledgementM = sentM = last;
            break;
        } catch (NoServer const& reason) {
            connectionM.requireOpen();
            if (stopM.isStopping()) {
                throw PublishingStopped();
            }
            troubleM = {};
            if (Clock::now() > begin + quietTime && !std::exchange(isReported, true)) {
                warn(host::messageText(reason));
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
    auto const info = connectionM.streamInfo(streamM, answerTime);
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
            throw failure(pipelineM, attempt(),
                          "another publisher writes to it; what was sent last isn't all there");
        }
    }
}

} // namespace stream
