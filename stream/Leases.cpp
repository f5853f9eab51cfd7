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
    while (!areServersThere && ownsAny()) { // whoever is next would begin where it last stood
        std::this_thread::sleep_for(retryInterval);
        areServersThere = copyPlaces();
    }
    for (auto const& [partition, lease] : leasesM) {
        if (areServersThere && lease.end > Clock::now()) {
            areServersThere =
                kvStore_Delete(bucketM.get(), std::to_string(partition).c_str()) == NATS_OK;
        }
    }
}

bool Leases::ownsAny() const {
    return std::any_of(leasesM.begin(), leasesM.end(),
                       [](auto const& each) { return each.second.end > Clock::now(); });
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

void Leases::copy(std::uint64_t partition, std::uint64_t term, StreamPlace const& place) {
    std::lock_guard const guard(lockM);
    toCopyM[partition] = {term, place};
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
    bool const wasOwn = lease.end > asked;
    bool const isOwn = write(partition, lease);
    bool const mayGoOn = isOwn || mayBeOwn(partition, lease);
    if (isOwn && !wasOwn) {
        logM.write(host::makeStatus(BAS::Status::notice, pipelineM, "MSG_PARTITION_TAKEN",
                                    {streamName(streamM.name, partition)}));
        lease.waitsFor.clear();
    }
    std::lock_guard const guard(lockM);
    if (isOwn) {
        lease.end = asked + leaseTime;
        lease.term += wasOwn ? 0 : 1;
    } else if (!mayGoOn) {
        lease.end = {};
    }
    lease.refresh = asked + (isOwn ? refreshInterval : retryInterval);
}

// Takes or refreshes it.
bool Leases::write(std::uint64_t partition, Lease& lease) {
    auto const key = std::to_string(partition);
    std::uint64_t revision = 0;
    auto const status =
        lease.revision == 0
            ? kvStore_CreateString(&revision, bucketM.get(), key.c_str(), ownerM.c_str())
            : kvStore_UpdateString(&revision, bucketM.get(), key.c_str(), ownerM.c_str(),
                                   lease.revision);
    if (status == NATS_OK) {
        lease.revision = revision;
    }
    return status == NATS_OK;
}

// After the entry couldn't be written: false when it isn't this host's, so that another one may
// have the partition now.
bool Leases::mayBeOwn(std::uint64_t partition, Lease& lease) {
    kvEntry* found = nullptr;
    auto const status = kvStore_Get(&found, bucketM.get(), std::to_string(partition).c_str());
    BucketEntry const entry(found);
    if (status == NATS_NOT_FOUND) {
        lease.revision = 0;
        return false;
    }
    // Any server answers, one that lags behind with an older entry.
    if (status != NATS_OK || kvEntry_Revision(found) < lease.revision) {
        return true;
    }
    std::string const owner = kvEntry_ValueString(found);
    if (owner == ownerM) {
        // It was written although the answer to that was lost.
        lease.revision = kvEntry_Revision(found);
        return true;
    }
    lease.revision = 0;
    reportOwner(partition, lease, owner);
    return false;
}

void Leases::reportOwner(std::uint64_t partition, Lease& lease, std::string const& owner) {
    if (lease.waitsFor != owner) {
        lease.waitsFor = owner;
        logM.write(host::makeStatus(BAS::Status::notice, pipelineM, "MSG_PARTITION_AWAITED",
                                    {streamName(streamM.name, partition), owner}));
    }
}

// False at the first place that can't be copied; the rest waits for the next time.
bool Leases::copyPlaces() {
    std::map<std::uint64_t, ReachedPlace> places;
    {
        std::lock_guard const guard(lockM);
        places.swap(toCopyM);
    }
    for (auto each = places.begin(); each != places.end(); ++each) {
        auto const& [partition, reached] = *each;
        std::uint64_t revision = 0;
        auto const key = std::to_string(partition);
        if (term(partition) == reached.term &&
            kvStore_PutString(&revision, placesM.get(), key.c_str(),
                              placeText(reached.place).c_str()) != NATS_OK) {
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

} // namespace stream
