#include "StreamReader.h"

#include "EdrMessage.h"
#include "StreamNames.h"
#include "base/MessageCatalogue.h"
#include "input/InputFile.h"

#include <algorithm>

namespace stream {

namespace {

constexpr std::size_t mostQueuedBytes = std::size_t{4} * 1024 * 1024; // of a partition
constexpr std::size_t messageOverhead = 512;
constexpr std::size_t portionSize = 256; // EDRs
constexpr auto retryInterval = std::chrono::milliseconds(200);
// So often a thread that waits for room asks how far its partition goes.
constexpr auto askInterval = std::chrono::seconds(1);

// Of a fetch: as much as is there, or one message when it comes.
constexpr int fetchedMessages = 64;
constexpr std::int64_t fetchedBytes = std::int64_t{2} * 1024 * 1024;
constexpr std::int64_t fetchTime = 1'000'000'000; // nanoseconds
constexpr std::int64_t waitTime = 1'000'000'000;  // nanoseconds
// Of those without a message, after which the partition is asked what it has.
constexpr std::size_t turnsUntilAsked = 3;
constexpr std::int64_t heartbeat = 250'000'000;       // nanoseconds
constexpr std::int64_t consumerLife = 30'000'000'000; // nanoseconds without a request

jsFetchRequest requestForAll() {
    jsFetchRequest request;
    jsFetchRequest_Init(&request);
    request.Batch = fetchedMessages;
    request.MaxBytes = fetchedBytes;
    request.NoWait = true; // else it would wait until all are there
    request.Expires = fetchTime;
    return request;
}

// However large it is.
jsFetchRequest requestForOne() {
    jsFetchRequest request;
    jsFetchRequest_Init(&request);
    request.Batch = 1;
    request.Expires = waitTime;
    request.Heartbeat = heartbeat;
    return request;
}

// The messages of a fetch, which can be taken out one by one.
class Fetched {
public:
    Fetched() = default;
    ~Fetched() { clear(); }
    Fetched(Fetched const&) = delete;
    Fetched& operator=(Fetched const&) = delete;

    natsStatus fetch(natsSubscription* subscription, jsFetchRequest request) {
        clear();
        return natsSubscription_FetchRequest(&listM, subscription, &request);
    }
    int count() const noexcept { return listM.Count; }
    Message take(int i) noexcept { return Message(std::exchange(listM.Msgs[i], nullptr)); }

private:
    void clear() {
        natsMsgList_Destroy(&listM);
        listM = {};
    }

    natsMsgList listM = {};
};

struct MessagePlace {
    std::uint64_t sequence = 0; // 0 when the message doesn't say it
    std::uint64_t last = 0;     // that the stream had when the message was sent
};

MessagePlace placeInStream(natsMsg* message) {
    jsMsgMetaData* found = nullptr;
    if (natsMsg_GetMetaData(&found, message) != NATS_OK) {
        return {};
    }
    Handle<jsMsgMetaData, &jsMsgMetaData_Destroy> const data(found);
    return {data->Sequence.Stream, data->Sequence.Stream + data->NumPending};
}

} // namespace

StreamReader::StreamReader(Connection& connection, host::StreamConfiguration const& stream,
                           host::PipelineConfiguration const& pipeline, host::EdrLineParser& parser,
                           host::Notification const& stop, PartitionKeeper& keeper)
    : connectionM(connection), streamM(stream), pipelineM(pipeline), stopM(stop), keeperM(keeper),
      fillerM(pipeline, parser) {
    for (auto const number : stream.partitions) {
        auto& partition = partitionsM.emplace_back();
        partition.number = number;
        partition.name = streamName(stream.name, number);
    }
    for (auto& partition : partitionsM) {
        threadsM.emplace_back([this, &partition] {
            try {
                fetchAhead(partition);
            } catch (...) {
                fail(std::current_exception());
            }
        });
    }
}

StreamReader::~StreamReader() {
    abandon();
}

void StreamReader::abandon() noexcept {
    {
        std::lock_guard const guard(lockM);
        isClosedM = true;
    }
    changedM.notify_all();
}

bool StreamReader::isClosed() const {
    std::lock_guard const guard(lockM);
    return isClosedM;
}

void StreamReader::fail(std::exception_ptr failure) {
    {
        std::lock_guard const guard(lockM);
        failureM = std::move(failure);
    }
    changedM.notify_all();
}

// Before something is tried again; false once the reader is abandoned.
bool StreamReader::pause() {
    std::unique_lock guard(lockM);
    return !changedM.wait_for(guard, retryInterval, [&] { return isClosedM; });
}

// The body of a partition's thread.
void StreamReader::fetchAhead(Partition& partition) {
    auto const start = keeperM.begin(partition.number, [this] { return !pause(); });
    if (!start) {
        return;
    }
    Fetching fetching;
    fetching.next = start->place;
    fetching.warmUp = std::min(start->warmUp, start->place.sequence - 1);
    while (!isClosed()) {
        bool const isFine = (fetching.subscription != nullptr || subscribe(partition, fetching)) &&
                            fetch(partition, fetching);
        if (!isFine) {
            fetching.subscription.reset();
            connectionM.requireOpen();
            pause();
        }
        connectionM.requirePermitted("reading " + partition.name);
    }
}

// Throws a BAS::Status when the stream was made anew, or is gone for so long that no server can be
// behind.
void StreamReader::requireStream(Partition const& partition, jsStreamInfo const* info,
                                 Fetching& fetching) const {
    if (info != nullptr) {
        fetching.goneSince.reset();
        if (info->Created != fetching.next.created) {
            throw host::makeStatus(BAS::Status::critical, {}, "ERR_STREAM_ANEW", {partition.name});
        }
        return;
    }
    auto const now = Clock::now();
    fetching.goneSince = fetching.goneSince.value_or(now);
    if (now >= *fetching.goneSince + staleTime) {
        throw failure(streamM.name, "reading the stream " + partition.name, "it was deleted");
    }
}

// A consumer from the next sequence. False when it can't be had now.
bool StreamReader::subscribe(Partition const& partition, Fetching& fetching) {
    StreamInfo info;
    try {
        info = connectionM.streamInfo(partition.name);
    } catch (NoServer const&) {
        return false;
    }
    requireStream(partition, info.get(), fetching);
    if (info != nullptr) {
        keeperM.noteRange(partition.number, info->State.FirstSeq, info->State.LastSeq);
        if (!keeperM.hasAll(partition.number, fetching.next, info->State.LastSeq)) {
            return false;
        }
    }
    jsSubOptions options;
    jsSubOptions_Init(&options);
    options.Stream = partition.name.c_str();
    options.Config.DeliverPolicy = js_DeliverByStartSequence;
    options.Config.OptStartSeq = fetching.next.sequence - fetching.warmUp;
    options.Config.AckPolicy = js_AckNone;
    options.Config.Replicas = 1;
    options.Config.MemoryStorage = true;
    options.Config.InactiveThreshold = consumerLife;
    natsSubscription* subscription = nullptr;
    jsErrCode code = {};
    auto const name = subject(streamM.name, partition.number);
    if (js_PullSubscribe(&subscription, connectionM.jetStream(), name.c_str(), nullptr, nullptr,
                         &options, &code) != NATS_OK) {
        return false;
    }
    fetching.subscription.reset(subscription);
    fetching.isNew = true;
    fetching.hasMore = false;
    fetching.idleTurns = 0;
    fetching.isOverdue = false;
    return true;
}

// False when anything is odd.
bool StreamReader::fetch(Partition& partition, Fetching& fetching) {
    Fetched messages;
    auto* const subscription = fetching.subscription.get();
    // Without knowing that there are messages: the server would wait, and keep back what comes. A
    // new subscription may begin with a message that is larger than what is fetched of many.
    auto const status =
        messages.fetch(subscription, fetching.hasMore ? requestForAll() : requestForOne());
    fetching.hasMore = false;
    for (int i = 0; i < messages.count(); ++i) {
        if (!accept(partition, fetching, messages.take(i))) {
            return false;
        }
    }
    if (status == NATS_TIMEOUT && messages.count() == 0) {
        return isServed(partition, fetching);
    }
    return status == NATS_OK || status == NATS_TIMEOUT;
}

// After a turn in which nothing came. False when there should have: a server may say again and
// again that it is there, and send nothing.
bool StreamReader::isServed(Partition const& partition, Fetching& fetching) {
    if (fetching.isOverdue) {
        return false;
    }
    if (++fetching.idleTurns == turnsUntilAsked) {
        fetching.idleTurns = 0;
        auto const info = askForState(partition);
        auto const expected = fetching.next.sequence - fetching.warmUp;
        // Messages that are purged or have expired leave their sequence behind.
        fetching.isOverdue =
            info != nullptr && ((info->State.Msgs > 0 && info->State.LastSeq >= expected) ||
                                info->State.LastSeq < lastRead(fetching.next));
    }
    return true;
}

// False when the message isn't the next one.
bool StreamReader::accept(Partition& partition, Fetching& fetching, Message message) {
    auto const [sequence, last] = placeInStream(message.get());
    auto const expected = fetching.next.sequence - fetching.warmUp;
    // Only from the start of a consumer on messages may be missing because they are gone.
    if (sequence < expected || (sequence != expected && !fetching.isNew)) {
        return false;
    }
    Item item;
    item.partition = &partition;
    item.sequence = sequence;
    item.bytes = static_cast<std::size_t>(natsMsg_GetDataLength(message.get())) + messageOverhead;
    item.message = std::move(message);
    if (fetching.warmUp == 0) {
        item.missing = sequence - expected;
        item.skipLines = item.missing == 0 ? fetching.next.lines : 0;
    } else if (sequence >= fetching.next.sequence) {
        item.missing = sequence - fetching.next.sequence;
    }
    fetching.warmUp = sequence < fetching.next.sequence ? fetching.next.sequence - sequence - 1 : 0;
    if (fetching.warmUp == 0) {
        fetching.next.sequence = std::max(fetching.next.sequence, sequence + 1);
        fetching.next.lines = 0;
    }
    fetching.isNew = false;
    fetching.idleTurns = 0;
    fetching.isOverdue = false;
    fetching.hasMore = last > sequence;
    keeperM.noteRange(partition.number, 0, last);
    put(std::move(item));
    return true;
}

// Waits for room.
void StreamReader::put(Item item) {
    std::unique_lock guard(lockM);
    auto& partition = *item.partition;
    while (!changedM.wait_for(
        guard, askInterval, [&] { return isClosedM || partition.queuedBytes < mostQueuedBytes; })) {
        guard.unlock();
        askForState(partition);
        guard.lock();
    }
    partition.queuedBytes += item.bytes;
    queueM.push_back(std::move(item));
    guard.unlock();
    changedM.notify_all();
}

// Null when that isn't known now.
StreamInfo StreamReader::askForState(Partition const& partition) {
    try {
        auto info = connectionM.streamInfo(partition.name);
        if (info != nullptr) {
            keeperM.noteRange(partition.number, info->State.FirstSeq, info->State.LastSeq);
        }
        return info;
    } catch (NoServer const&) {
        return nullptr;
    }
}

void StreamReader::read(host::InputPortion& portion) noexcept {
    portion.clear();
    try {
        while (portion.rejected.empty() && portion.messages.empty() &&
               portion.edrs.count() < portionSize && !portion.isPause) {
            if (atM < textM.size()) {
                takeLine(portion);
            } else if (take(!isPauseDueM)) {
                open(portion);
                isPauseDueM = true; // also when the portion ends before the message does
            } else {
                portion.isPause = true;
                isPauseDueM = false;
            }
        }
    } catch (...) {
        portion.isLast = true;
        portion.failure = std::current_exception();
    }
    portion.end = endM;
    portion.bytesRead = bytesReadM;
    portion.rejectedLines = fillerM.rejectedLines();
}

// Makes the next message the present one; false when there is none or the pipeline must see that
// its partitions aren't its own any more, or throws InputStopped when waiting for one ends.
bool StreamReader::take(bool mayWait) {
    std::unique_lock guard(lockM);
    while (queueM.empty()) {
        if (failureM != nullptr) {
            std::rethrow_exception(failureM);
        }
        if (stopM.isSet() || isClosedM) {
            throw host::InputStopped();
        }
        if (!mayWait || !keeperM.areHeld()) {
            return false;
        }
        // The notification is no condition variable.
        changedM.wait_for(guard, std::chrono::milliseconds(50));
    }
    itemM = std::move(queueM.front());
    queueM.pop_front();
    itemM.partition->queuedBytes -= itemM.bytes;
    guard.unlock();
    changedM.notify_all();
    return true;
}

// Decodes the present message.
void StreamReader::open(host::InputPortion& portion) {
    auto* const message = itemM.message.get();
    std::string_view const data(natsMsg_GetData(message),
                                static_cast<std::size_t>(natsMsg_GetDataLength(message)));
    bytesReadM += data.size();
    atM = 0;
    lineM = 0;
    textM.clear();
    if (itemM.missing > 0) {
        portion.messages.push_back(host::makeStatus(
            BAS::Status::error, pipelineM.registeredName, "ERR_STREAM_MESSAGES_MISSING",
            {itemM.partition->name, std::to_string(itemM.missing),
             std::to_string(itemM.sequence)}));
    }
    try {
        decode(encodingOf(message), data, host::EdrLineParser::padding, textM);
    } catch (MessageError const& error) {
        portion.rejected = data;
        fillerM.reportRejected(portion, origin(), std::string("the message: ") + error.what());
    }
    itemM.message.reset();
    endM = {itemM.partition->number, itemM.sequence + (textM.empty() ? 1 : 0), 0};
}

void StreamReader::takeLine(host::InputPortion& portion) {
    auto const end = std::min(textM.find('\n', atM), textM.size());
    auto const line = std::string_view(textM).substr(atM, end - atM);
    auto const raw = std::string_view(textM).substr(atM, end - atM + (end < textM.size() ? 1 : 0));
    atM += raw.size();
    ++lineM;
    endM = {itemM.partition->number, itemM.sequence, lineM};
    if (atM == textM.size()) {
        endM = {itemM.partition->number, itemM.sequence + 1, 0};
    }
    if (lineM <= itemM.skipLines || line.find_first_not_of(" \t\r") == std::string_view::npos) {
        return;
    }
    if (line.size() > pipelineM.maxLineLength) {
        portion.rejected = raw;
        fillerM.reportRejected(portion, origin(),
                               "the line is longer than " +
                                   std::to_string(pipelineM.maxLineLength) + " bytes");
    } else {
        fillerM.take(portion, line, raw, endM, [&] { return origin(); });
    }
}

host::LineOrigin StreamReader::origin() const {
    return {itemM.partition->name, std::to_string(itemM.sequence) + ":" + std::to_string(lineM),
            (streamM.stateDirectory / (itemM.partition->name + ".reject")).string()};
}

} // namespace stream
