#include "Leases.h"

#include "BAS/LogSink.h"
#include "StreamNames.h"
#include "base/MessageCatalogue.h"

#include <fmt/format.h>

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace stream {

namespace {

constexpr auto copyInterval = std::chrono::seconds(1);
constexpr auto retryInterval = std::chrono::milliseconds(300);
constexpr auto refreshInterval = std::chrono::milliseconds(leaseTime) / 3;

} // namespace

std::string processName() {
    std::array<char, 256> name = {};
    ::gethostname(name.data(), name.size() - 1);
    return fmt::format("{}:{}:{}", name.data(), ::getpid(),
                       std::chrono::system_clock::now().time_since_epoch().count());
}

Leases::Leases(Connection const& connection, host::StreamConfiguration const& stream,
               std::string const& pipeline, BAS::LogSink& log)
    : connectionM(connection), streamM(stream), pipelineM(pipeline), logM(log),
      ownerM(processName()), bucketM(connection.bucket(leaseBucket(stream.name))),
      placesM(connection.bucket(placeBucket(stream.name))) {
    for (auto const partition : stream.partitions) {
        leasesM[partition] = {};
    }
    keeperM = std::jthread([this] { keepAll(); });
}

Leases::~Leases() {
    {
        std::lock_guard const guard(lockM);
        isClosedM = true;
    }
    changedM.notify_all();
    keeperM.join();
    bool areServersThere = copyPlaces();
    for (auto const& [partition, lease] : leasesM) {
        if (areServersThere && lease.end > Clock::now()) {
            areServersThere =
                kvStore_Delete(bucketM.get(), std::to_string(partition).c_str()) == NATS_OK;
        }
    }
}

std::optional<std::uint64_t> Leases::term(std::uint64_t partition) const {
    std::lock_guard const guard(lockM);
    auto const& lease = leasesM.at(partition);
    return lease.end > Clock::now() ? std::optional(lease.term) : std::nullopt;
}

std::optional<StreamPlace> Leases::copiedPlace(std::uint64_t partition) const {
    kvEntry* found = nullptr;
    auto const status = kvStore_Get(&found, placesM.get(), std::to_string(partition).c_str());
    if (status == NATS_NOT_FOUND) {
        return std::nullopt;
    }
    if (status != NATS_OK) {
        connectionM.fail("reading the copied place", status);
    }
    BucketEntry const entry(found);
    return parsePlace({static_cast<char const*>(kvEntry_Value(found)),
                       static_cast<std::size_t>(kvEntry_ValueLen(found))});
}

void Leases::copy(std::uint64_t partition, StreamPlace const& place) {
    std::lock_guard const guard(lockM);
    toCopyM[partition] = place;
}

// The thread's body.
void Leases::keepAll() {
    auto nextCopy = Clock::now() + copyInterval;
    for (;;) {
        auto next = nextCopy;
        for (auto& [partition, lease] : leasesM) {
            if (lease.refresh <= Clock::now()) {
                if (isClosed()) {
                    return;
                }
                keep(partition, lease);
            }
            next = std::min(next, lease.refresh);
        }
        if (nextCopy <= Clock::now()) {
            copyPlaces();
            nextCopy = Clock::now() + copyInterval;
        }
        if (!waitUntil(next)) {
            return;
        }
    }
}

void Leases::keep(std::uint64_t partition, Lease& lease) {
    // The entry lives at least so long after it was asked for.
    auto const asked = Clock::now();
    bool const isOwn = lease.end > asked;
    bool const isKept = isOwn ? refresh(partition, lease) : take(partition, lease);
    if (isKept && !isOwn) {
        logM.write(host::makeStatus(BAS::Status::notice, pipelineM, "MSG_PARTITION_TAKEN",
                                    {streamName(streamM.name, partition)}));
        lease.waitsFor.clear();
    }
    if (!isKept && !isOwn) {
        reportOwner(partition, lease);
    }
    std::lock_guard const guard(lockM);
    if (isKept) {
        lease.end = asked + leaseTime;
        lease.term += isOwn ? 0 : 1;
    }
    lease.refresh = asked + (isKept ? refreshInterval : retryInterval);
}

bool Leases::take(std::uint64_t partition, Lease& lease) {
    return kvStore_CreateString(&lease.revision, bucketM.get(), std::to_string(partition).c_str(),
                                ownerM.c_str()) == NATS_OK;
}

bool Leases::refresh(std::uint64_t partition, Lease& lease) {
    auto const key = std::to_string(partition);
    if (kvStore_UpdateString(&lease.revision, bucketM.get(), key.c_str(), ownerM.c_str(),
                             lease.revision) == NATS_OK) {
        return true;
    }
    // An earlier refresh may have been done although its answer was lost.
    auto const entry = entryOf(partition);
    if (entry != nullptr && ownerM == kvEntry_ValueString(entry.get())) {
        lease.revision = kvEntry_Revision(entry.get());
    }
    return false;
}

void Leases::reportOwner(std::uint64_t partition, Lease& lease) {
    auto const entry = entryOf(partition);
    if (entry == nullptr || lease.waitsFor == kvEntry_ValueString(entry.get())) {
        return;
    }
    lease.waitsFor = kvEntry_ValueString(entry.get());
    logM.write(host::makeStatus(BAS::Status::notice, pipelineM, "MSG_PARTITION_AWAITED",
                                {streamName(streamM.name, partition), lease.waitsFor}));
}

// False at the first place that can't be copied; the rest waits for the next time.
bool Leases::copyPlaces() {
    std::map<std::uint64_t, StreamPlace> places;
    {
        std::lock_guard const guard(lockM);
        places.swap(toCopyM);
    }
    for (auto each = places.begin(); each != places.end(); ++each) {
        auto const& [partition, place] = *each;
        std::uint64_t revision = 0;
        auto const key = std::to_string(partition);
        if (term(partition) && kvStore_PutString(&revision, placesM.get(), key.c_str(),
                                                 placeText(place).c_str()) != NATS_OK) {
            std::lock_guard const guard(lockM);
            toCopyM.insert(each, places.end()); // but where there is a later one
            return false;
        }
    }
    return true;
}

bool Leases::isClosed() const {
    std::lock_guard const guard(lockM);
    return isClosedM;
}

// False once the object is destroyed.
bool Leases::waitUntil(Clock::time_point time) {
    std::unique_lock guard(lockM);
    return !changedM.wait_until(guard, time, [&] { return isClosedM; });
}

BucketEntry Leases::entryOf(std::uint64_t partition) const {
    kvEntry* entry = nullptr;
    kvStore_Get(&entry, bucketM.get(), std::to_string(partition).c_str());
    return BucketEntry(entry);
}

} // namespace stream
