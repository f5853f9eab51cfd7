#include "StreamReader.h"

#include "StreamNames.h"
#include "base/MessageCatalogue.h"
#include "input/InputFile.h"

#include <algorithm>

namespace stream {

namespace {

constexpr std::size_t messageOverhead = 512;
// Of a portion: so many bytes, to which a message is added that isn't larger than publishers make
// them, and so many EDRs.
constexpr std::size_t portionSize = std::size_t{256} * 1024;
constexpr std::size_t mostEdrs = 1024;
constexpr auto retryInterval = std::chrono::milliseconds(200);
// So often a thread that waits for room asks how far its partition goes.
constexpr auto askInterval = std::chrono::seconds(1);

// Of a fetch: as much as is there, or one message when it comes.
constexpr int fetchedMessages = 32;
constexpr std::int64_t fetchedBytes = std::int64_t{2} * 1024 * 1024;
// What a partition may have in the queue when a fetch begins; with that fetch, less than 4 MB, but
// for a single message that is larger. It is no more than bridges the time of a fetch: what waits
// longer has left the processor's cache.
constexpr std::size_t mostWaitingBytes = std::size_t{512} * 1024;
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
    filledM.notify_all();
    for (auto& partition : partitionsM) {
        partition.changed.notify_all();
    }
}

void StreamReader::fail(std::exception_ptr failure) {
    {
        std::lock_guard const guard(lockM);
        failureM = std::move(failure);
    }
    filledM.notify_all();
}

// Before something is tried again; false once the reader is abandoned.
bool StreamReader::pause(Partition& partition) {
    std::unique_lock guard(lockM);
    return !partition.changed.wait_for(guard, retryInterval, [&] { return isClosedM; });
}

// The body of a partition's thread.
void StreamReader::fetchAhead(Partition& partition) {
    auto const start = keeperM.begin(partition.number, [&] { return !pause(partition); });
    if (!start) {
        return;
    }
    Fetching fetching;
    fetching.next = start->place;
    fetching.warmUp = std::min(start->warmUp, start->place.sequence - 1);
    while (waitForRoom(partition)) {
        bool const isFine = (fetching.subscription != nullptr || subscribe(partition, fetching)) &&
                            fetch(partition, fetching);
        if (!isFine) {
            fetching.subscription.reset();
            connectionM.requireOpen();
            pause(partition);
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
    std::vector<Item> items;
    bool areInOrder = true;
    for (int i = 0; i < messages.count() && areInOrder; ++i) {
        areInOrder = accept(partition, fetching, messages.take(i), items);
    }
    put(partition, std::move(items));
    if (status == NATS_TIMEOUT && messages.count() == 0) {
        return isServed(partition, fetching);
    }
    return areInOrder && (status == NATS_OK || status == NATS_TIMEOUT);
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

std::string_view StreamReader::Item::data() const noexcept {
    return {natsMsg_GetData(message.get()),
            static_cast<std::size_t>(natsMsg_GetDataLength(message.get()))};
}

std::size_t StreamReader::Item::bytes() const noexcept {
    return data().size() + messageOverhead;
}

// False when the message isn't the next one.
bool StreamReader::accept(Partition const& partition, Fetching& fetching, Message message,
                          std::vector<Item>& items) {
    auto const [sequence, last] = placeInStream(message.get());
    auto const expected = fetching.next.sequence - fetching.warmUp;
    // Only from the start of a consumer on messages may be missing because they are gone.
    if (sequence < expected || (sequence != expected && !fetching.isNew)) {
        return false;
    }
    auto& item = items.emplace_back();
    item.sequence = sequence;
    item.encoding = encodingOf(message.get());
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
    return true;
}

// False once the reader is abandoned.
bool StreamReader::waitForRoom(Partition& partition) {
    std::vector<Message> finished; // destroyed without the lock
    std::unique_lock guard(lockM);
    while (!partition.changed.wait_for(guard, askInterval, [&] {
        return isClosedM || partition.queuedBytes <= mostWaitingBytes;
    })) {
        guard.unlock();
        askForState(partition);
        guard.lock();
    }
    finished.swap(partition.finished);
    return !isClosedM;
}

void StreamReader::put(Partition& partition, std::vector<Item> items) {
    {
        std::lock_guard const guard(lockM);
        for (auto& item : items) {
            item.partition = &partition;
            partition.queuedBytes += item.bytes();
            queueM.push_back(std::move(item));
        }
    }
    filledM.notify_one();
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
    isEndDueM = false;
    try {
        while (!isComplete(portion)) {
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
        keepRest();
    } catch (...) {
        portion.isLast = true;
        portion.failure = std::current_exception();
    }
    portion.end = endM;
    portion.bytesRead = bytesReadM;
    portion.rejectedLines = fillerM.rejectedLines();
}

bool StreamReader::isComplete(host::InputPortion const& portion) const noexcept {
    bool const isInItsText = isTextInPortionM && atM < textM.size();
    return !portion.rejected.empty() || !portion.messages.empty() || portion.isPause || isEndDueM ||
           portion.edrs.count() >= mostEdrs ||
           (portion.edrs.textSize() >= portionSize && !isInItsText);
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
        filledM.wait_for(guard, std::chrono::milliseconds(50));
    }
    if (itemM.message != nullptr) {
        itemM.partition->finished.push_back(std::move(itemM.message));
    }
    itemM = std::move(queueM.front());
    queueM.pop_front();
    auto& partition = *itemM.partition;
    bool const wasFull = partition.queuedBytes > mostWaitingBytes;
    partition.queuedBytes -= itemM.bytes();
    bool const hasRoom = partition.queuedBytes <= mostWaitingBytes;
    guard.unlock();
    if (wasFull && hasRoom) {
        partition.changed.notify_one();
    }
    return true;
}

// Begins with the present message.
void StreamReader::open(host::InputPortion& portion) {
    bytesReadM += itemM.data().size();
    lineM = 0;
    if (itemM.missing > 0) {
        portion.messages.push_back(host::makeStatus(
            BAS::Status::error, pipelineM.registeredName, "ERR_STREAM_MESSAGES_MISSING",
            {itemM.partition->name, std::to_string(itemM.missing),
             std::to_string(itemM.sequence)}));
    }
    atM = 0;
    textM = {};
    try {
        decode(portion);
    } catch (MessageError const& error) {
        portion.rejected = itemM.data();
        fillerM.reportRejected(portion, origin(), std::string("the message: ") + error.what());
    }
    isEndDueM = textM.empty();
    endM = {itemM.partition->number, itemM.sequence + (textM.empty() ? 1 : 0), 0};
}

// The lines of the present message: in the portion, where they needn't be copied, unless they would
// make it much larger.
void StreamReader::decode(host::InputPortion& portion) {
    auto const size = MessageDecoder::decodedSize(itemM.encoding, itemM.data());
    auto const needed = size + host::EdrLineParser::padding;
    isTextInPortionM = size <= mostBytes;
    if (!isTextInPortionM) {
        ownTextM.resize(std::max(ownTextM.size(), needed));
    }
    auto const room = isTextInPortionM ? portion.edrs.makeRoom(needed) : std::span(ownTextM);
    textM = {room.data(), decoderM.decode(itemM.encoding, itemM.data(), room.first(size))};
}

// The portion with the text will be the pipeline's.
void StreamReader::keepRest() {
    if (isTextInPortionM) {
        auto const rest = textM.substr(atM);
        ownTextM.resize(std::max(ownTextM.size(), rest.size() + host::EdrLineParser::padding));
        std::ranges::copy(rest, ownTextM.begin());
        textM = std::string_view(ownTextM).substr(0, rest.size());
        atM = 0;
        isTextInPortionM = false;
    }
}

void StreamReader::takeLine(host::InputPortion& portion) {
    auto const end = std::min(textM.find('\n', atM), textM.size());
    auto const line = textM.substr(atM, end - atM);
    auto const raw = textM.substr(atM, end - atM + (end < textM.size() ? 1 : 0));
    atM += raw.size();
    ++lineM;
    endM = {itemM.partition->number, itemM.sequence, lineM};
    if (atM == textM.size()) {
        endM = {itemM.partition->number, itemM.sequence + 1, 0};
    }
    if (lineM <= itemM.skipLines || line.find_first_not_of(" \t\r") == std::string_view::npos) {
        isEndDueM = atM == textM.size();
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
