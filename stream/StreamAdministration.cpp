#include "StreamAdministration.h"

#include "Connection.h"
#include "Leases.h"
#include "StreamNames.h"
#include "StreamPlaces.h"

#include <fmt/format.h>

#include <algorithm>
#include <iostream>

namespace stream {

namespace {

constexpr double nanosecondsPerHour = 3600e9;

void createStream(Connection& connection, host::StreamConfiguration const& stream,
                  host::StreamLimits const& limits, std::uint64_t partition) {
    auto const name = streamName(stream.name, partition);
    auto const messages = subject(stream.name, partition);
    char const* subjects[] = {messages.c_str()};
    jsStreamConfig configuration;
    jsStreamConfig_Init(&configuration);
    configuration.Name = name.c_str();
    configuration.Subjects = subjects;
    configuration.SubjectsLen = 1;
    configuration.Storage = js_FileStorage;
    configuration.Replicas = static_cast<std::int64_t>(limits.replicas);
    configuration.MaxBytes = limits.bytes;
    configuration.MaxAge = static_cast<std::int64_t>(limits.hours * nanosecondsPerHour);
    configuration.DenyDelete = true; // a sequence without holes is what losses are counted by
    jsErrCode code = {};
    auto const status =
        js_AddStream(nullptr, connection.jetStream(), &configuration, nullptr, &code);
    if (status != NATS_OK) {
        connection.fail("making the stream " + name, status);
    }
}

void createBucket(Connection& connection, host::StreamLimits const& limits, std::string const& name,
                  std::chrono::nanoseconds life) {
    kvStore* existing = nullptr;
    if (js_KeyValue(&existing, connection.jetStream(), name.c_str()) == NATS_OK) {
        kvStore_Destroy(existing);
        return;
    }
    kvConfig configuration;
    kvConfig_Init(&configuration);
    configuration.Bucket = name.c_str();
    configuration.History = 1;
    configuration.Replicas = static_cast<int>(limits.replicas);
    // In memory it would be gone with a majority of the servers, and nobody could take a lease.
    configuration.StorageType = js_FileStorage;
    configuration.TTL = life.count();
    kvStore* store = nullptr;
    auto const status = js_CreateKeyValue(&store, connection.jetStream(), &configuration);
    Bucket const bucket(store);
    if (status != NATS_OK) {
        connection.fail("making the bucket " + name, status);
    }
}

std::string valueOf(kvStore* bucket, std::uint64_t partition) {
    kvEntry* found = nullptr;
    if (kvStore_Get(&found, bucket, std::to_string(partition).c_str()) != NATS_OK) {
        return {};
    }
    BucketEntry const entry(found);
    return {static_cast<char const*>(kvEntry_Value(found)),
            static_cast<std::size_t>(kvEntry_ValueLen(found))};
}

} // namespace

host::ExitCode createStreams(host::StreamConfiguration const& stream,
                             host::StreamLimits const& limits) {
    Connection connection(stream);
    for (std::uint64_t partition = 0; partition < stream.partitionCount; ++partition) {
        auto const name = streamName(stream.name, partition);
        bool const isThere = connection.streamInfo(name) != nullptr;
        if (!isThere) {
            createStream(connection, stream, limits, partition);
        }
        std::cout << name << (isThere ? ": is there already\n" : ": made\n");
    }
    createBucket(connection, limits, leaseBucket(stream.name), leaseTime);
    createBucket(connection, limits, placeBucket(stream.name), {});
    std::cout << std::flush;
    return std::cout ? host::done : host::inputOrOutputFailed;
}

host::ExitCode showStreams(host::StreamConfiguration const& stream) {
    Connection connection(stream);
    auto const leases = connection.bucket(leaseBucket(stream.name));
    auto const places = connection.bucket(placeBucket(stream.name));
    bool areAllThere = true;
    std::cout << fmt::format("{:<24} {:>10} {:>12} {:>10} {:>10} {:>10}  {}\n", "Stream",
                             "Messages", "Bytes", "First", "Last", "Lag", "Owner");
    for (std::uint64_t partition = 0; partition < stream.partitionCount; ++partition) {
        auto const name = streamName(stream.name, partition);
        auto const info = connection.streamInfo(name);
        if (info == nullptr) {
            areAllThere = false;
            std::cout << fmt::format("{:<24} there is none\n", name);
            continue;
        }
        auto const& state = info->State;
        auto const place = parsePlace(valueOf(places.get(), partition));
        auto const done = place && place->created == info->Created ? place->sequence - 1 : 0;
        auto const owner = valueOf(leases.get(), partition);
        std::cout << fmt::format("{:<24} {:>10} {:>12} {:>10} {:>10} {:>10}  {}\n", name,
                                 state.Msgs, state.Bytes, state.FirstSeq, state.LastSeq,
                                 state.LastSeq - std::min(done, state.LastSeq),
                                 owner.empty() ? "-" : owner);
    }
    std::cout << std::flush;
    return !std::cout ? host::inputOrOutputFailed : areAllThere ? host::done : host::doneWithFaults;
}

} // namespace stream
