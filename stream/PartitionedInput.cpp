#include "PartitionedInput.h"

#include "BAS/LogSink.h"
#include "StreamNames.h"
#include "StreamShape.h"
#include "base/MessageCatalogue.h"
#include "base/Poll.h"

#include <algorithm>
#include <limits>

namespace stream {

namespace {

constexpr auto connectInterval = std::chrono::seconds(1);
constexpr auto everything = std::numeric_limits<std::uint64_t>::max();

bool isBefore(StreamPlace const& one, StreamPlace const& other) {
    return std::pair(one.sequence, one.lines) < std::pair(other.sequence, other.lines);
}

std::filesystem::path placesFile(host::StreamConfiguration const& stream) {
    std::filesystem::create_directories(stream.stateDirectory);
    return stream.stateDirectory / (stream.name + ".places");
}

} // namespace

PartitionedInput::PartitionedInput(host::PipelineConfiguration const& pipeline,
                                   EDR::Description const& description, BAS::LogSink& log)
    : pipelineM(pipeline), streamM(*pipeline.stream), parserM(description), logM(log),
      placesM(placesFile(streamM)) {
    connect();
}

// False when no server answers. Throws a BAS::Status when the servers turn the host away.
bool PartitionedInput::connect() {
    try {
        if (connectionM == nullptr) {
            connectionM = std::make_unique<Connection>(streamM);
        }
        // Also a standby, which doesn't read yet, is to know.
        auto const name = streamName(streamM.name, streamM.partitions.front());
        if (auto const info = connectionM->streamInfo(name)) {
            requirePartitionCount(streamM, *info);
        }
        auto leases =
            std::make_unique<Leases>(*connectionM, streamM, pipelineM.registeredName, logM);
        std::lock_guard const guard(lockM);
        leasesM = std::move(leases);
        return true;
    } catch (NoServer const& status) {
        if (!isWaitReportedM) {
            isWaitReportedM = true;
            auto warning =
                host::makeStatus(BAS::Status::warning, pipelineM.registeredName,
                                 "ERR_STREAM_AWAITED", {streamM.name, host::messageText(status)});
            logM.write(warning);
        }
        return false;
    }
}

std::unique_ptr<host::EdrSource> PartitionedInput::open(host::Notification const& stop) {
    while (leasesM == nullptr && !connect()) {
        if (host::waitForAny({stop.descriptor()},
                             std::chrono::steady_clock::now() + connectInterval)) {
            return nullptr;
        }
    }
    {
        std::lock_guard const guard(lockM);
        readingM.clear();
        rejectsM.clear();
    }
    return std::make_unique<StreamReader>(*connectionM, streamM, pipelineM, parserM, stop, *this);
}

// What is fetched already is processed; then all begins again where it is known to stand.
bool PartitionedInput::hasAll(std::uint64_t partition, StreamPlace const& next,
                              std::uint64_t last) {
    std::lock_guard const guard(lockM);
    auto const loss = lossOf(partition, next, last);
    if (loss == Loss::certain) {
        readingM.at(partition).term = 0;
    }
    return loss == Loss::none;
}

// Whether a partition with that last message lacks some that came before the place. The caller has
// the lock.
PartitionedInput::Loss PartitionedInput::lossOf(std::uint64_t partition, StreamPlace const& place,
                                                std::uint64_t last) {
    if (lastRead(place) <= last) {
        lossesM.erase(partition);
        return Loss::none;
    }
    auto const now = std::chrono::steady_clock::now();
    auto const since = lossesM.emplace(partition, now).first->second;
    return now < since + staleTime ? Loss::suspected : Loss::certain;
}

// The place becomes the partition's end. The caller has the lock.
void PartitionedInput::goBack(std::string const& name, std::uint64_t partition, StreamPlace& place,
                              std::uint64_t last) {
    logM.write(host::makeStatus(BAS::Status::error, pipelineM.registeredName,
                                "ERR_STREAM_MESSAGES_LOST",
                                {name, std::to_string(last + 1), std::to_string(lastRead(place))}));
    lossesM.erase(partition);
    place.sequence = last + 1;
    place.lines = 0;
    placesM.set(partition, place);
    placesM.write();
}

void PartitionedInput::noteRange(std::uint64_t partition, std::uint64_t first, std::uint64_t last) {
    std::lock_guard const guard(lockM);
    auto& reading = readingM.at(partition);
    reading.first = std::max(reading.first, first);
    reading.last = last;
}

std::vector<host::PartitionState> PartitionedInput::state() const {
    std::lock_guard const guard(lockM);
    std::vector<host::PartitionState> states;
    for (auto const number : streamM.partitions) {
        auto& state = states.emplace_back();
        state.number = number;
        auto const found = readingM.find(number);
        if (found == readingM.end()) {
            continue;
        }
        auto const& reading = found->second;
        state.isOwned = leasesM->term(number) == reading.term;
        state.sequence = reading.place.sequence;
        state.lag = lagOf(reading.place.sequence, reading.first, reading.last);
    }
    return states;
}

std::optional<PartitionKeeper::Start> PartitionedInput::begin(std::uint64_t partition,
                                                              std::function<bool()> const& ended) {
    {
        std::lock_guard const guard(lockM);
        lossesM.erase(partition);
    }
    for (;;) {
        if (auto const term = leasesM->term(partition)) {
            if (auto const start = startOf(partition, *term)) {
                return start;
            }
        }
        if (ended()) {
            return std::nullopt;
        }
        connectionM->requirePermitted("taking " + streamName(streamM.name, partition));
    }
}

// Nothing when the servers don't answer. Throws a BAS::Status when there is no such stream, another
// one than before, or none that this host may read.
std::optional<PartitionKeeper::Start> PartitionedInput::startOf(std::uint64_t partition,
                                                                std::uint64_t term) {
    auto const name = streamName(streamM.name, partition);
    StreamInfo info;
    std::optional<StreamPlace> copied;
    try {
        info = connectionM->streamInfo(name);
        copied = leasesM->copiedPlace(partition);
    } catch (NoServer const&) {
        return std::nullopt;
    }
    if (info == nullptr) {
        throw failure(streamM.name, "reading the stream " + name,
                      "there is none; 'pipeline-host stream create' makes it");
    }
    requirePartitionCount(streamM, *info);
    std::lock_guard const guard(lockM);
    auto const local = placesM.read(partition);
    auto const isOf = [&](auto const& place) { return place && place->created == info->Created; };
    if ((local || copied) && !isOf(local) && !isOf(copied)) {
        throw host::makeStatus(BAS::Status::critical, {}, "ERR_STREAM_ANEW", {name});
    }
    Start start;
    // What is gone before this host, or any, ever reads isn't missed.
    start.place.sequence = std::max<std::uint64_t>(info->State.FirstSeq, 1);
    start.place.created = info->Created;
    auto rejectedBytes = everything;
    if (isOf(local)) {
        start.place = *local;
        rejectedBytes = local->rejectedBytes;
    }
    bool const isCopyLater = isOf(copied) && (!isOf(local) || isBefore(*local, *copied));
    if (isCopyLater) {
        start.place = *copied;
        rejectedBytes = everything; // what the file has is from before another host had a turn
    }
    auto const& rejects =
        rejectsM
            .insert_or_assign(partition,
                              host::RejectFile({"-", rejectFile(partition)}, rejectedBytes))
            .first->second;
    start.place.rejectedBytes = rejects.size();
    auto const loss = lossOf(partition, start.place, info->State.LastSeq);
    if (loss == Loss::suspected) {
        return std::nullopt;
    }
    if (loss == Loss::certain) {
        goBack(name, partition, start.place, info->State.LastSeq);
    }
    // Whoever goes on where it stopped itself has everything in its stores.
    start.warmUp = readBeforeM.insert(partition).second || isCopyLater ? streamM.warmUp : 0;
    readingM[partition] = {start.place, term, info->State.FirstSeq, info->State.LastSeq};
    leasesM->copy(partition, term, start.place); // it may be later than the copy
    logM.write(host::makeStatus(
        BAS::Status::info, pipelineM.registeredName, "MSG_STREAM_STARTED",
        {name, std::to_string(start.place.sequence), std::to_string(start.place.lines)}));
    return start;
}

std::filesystem::path PartitionedInput::rejectFile(std::uint64_t partition) const {
    return streamM.stateDirectory / (streamName(streamM.name, partition) + ".reject");
}

void PartitionedInput::reject(host::InputPlace const& end, std::string_view line) {
    std::lock_guard const guard(lockM);
    auto const& current = readingM.at(end.partition).place;
    // What is read again at the start was kept before.
    if (isBefore(current, {end.message, end.offset, 0, 0})) {
        rejectsM.at(end.partition).append(line);
    }
}

bool PartitionedInput::mayProcess() {
    return areHeld();
}

bool PartitionedInput::areHeld() const {
    std::lock_guard const guard(lockM);
    return std::all_of(readingM.begin(), readingM.end(), [&](auto const& each) {
        return leasesM->term(each.first) == each.second.term;
    });
}

void PartitionedInput::keep(std::vector<host::InputPlace> const& places) {
    std::lock_guard const guard(lockM);
    for (auto const& place : places) {
        auto const reading = readingM.find(place.partition);
        if (reading == readingM.end()) {
            continue; // nothing has come yet
        }
        auto& current = reading->second.place;
        StreamPlace next{place.message, place.offset, rejectsM.at(place.partition).size(),
                         current.created};
        if (isBefore(current, next)) {
            current = next;
            placesM.set(place.partition, current);
            leasesM->copy(place.partition, reading->second.term, current);
        }
    }
    placesM.write();
}

} // namespace stream
