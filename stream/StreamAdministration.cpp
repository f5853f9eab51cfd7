#include "StreamAdministration.h"

#include "Connection.h"
#include "Leases.h"
#include "StreamNames.h"
#include "StreamPlaces.h"
#include "StreamShape.h"
#include "base/EscapedText.h"
#include "base/JsonText.h"
#include "base/TextTable.h"

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
    auto const description = partitionDescription(partition, stream.partitionCount);
    char const* subjects[] = {messages.c_str()};
    jsStreamConfig configuration;
    jsStreamConfig_Init(&configuration);
    configuration.Name = name.c_str();
    configuration.Description = description.c_str();
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

void addPartitionCount(Connection& connection, host::StreamConfiguration const& stream,
                       jsStreamInfo const& there, std::uint64_t partition) {
    auto const description = partitionDescription(partition, stream.partitionCount);
    auto configuration = *there.Config;
    configuration.Description = description.c_str();
    jsErrCode code = {};
    auto const status =
        js_UpdateStream(nullptr, connection.jetStream(), &configuration, nullptr, &code);
    if (status != NATS_OK) {
        connection.fail(fmt::format("describing the stream {}", configuration.Name), status);
    }
}

// Those that are there, null for others. Throws a BAS::Status when they are of a stream with
// another number of partitions, or when that isn't known: an earlier version made some of them.
std::vector<StreamInfo> partitionsThere(Connection const& connection,
                                        host::StreamConfiguration const& stream) {
    std::vector<StreamInfo> there;
    std::uint64_t undescribed = 0;
    for (std::uint64_t partition = 0; partition < stream.partitionCount; ++partition) {
        there.push_back(connection.streamInfo(streamName(stream.name, partition)));
        if (auto const& info = there.back()) {
            requirePartitionCount(stream, *info);
            undescribed += partitionCountOf(*info) ? 0 : 1;
        }
    }
    auto const next = streamName(stream.name, stream.partitionCount);
    bool const isWhole = std::find(there.begin(), there.end(), nullptr) == there.end() &&
                         connection.streamInfo(next) == nullptr;
    if (undescribed > 0 && !isWhole) {
        throw failure(stream.name, "using the streams that are there",
                      fmt::format("{} of them don't say how many partitions there are, and "
                                  "together they aren't the {} that 'Of' says",
                                  undescribed, stream.partitionCount));
    }
    return there;
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

// Empty when the bucket has none for the partition.
std::string valueOf(Connection const& connection, kvStore* bucket, std::uint64_t partition) {
    kvEntry* found = nullptr;
    auto const status = kvStore_Get(&found, bucket, std::to_string(partition).c_str());
    if (status == NATS_NOT_FOUND) {
        return {};
    }
    if (status != NATS_OK) {
        connection.fail(fmt::format("reading the bucket {}", kvStore_Bucket(bucket)), status);
    }
    BucketEntry const entry(found);
    return {static_cast<char const*>(kvEntry_Value(found)),
            static_cast<std::size_t>(kvEntry_ValueLen(found))};
}

struct ShownPartition {
    std::uint64_t number = 0;
    std::string name;
    std::optional<jsStreamState> state; // nothing when there is no such stream
    std::uint64_t lag = 0;              // messages
    std::uint64_t place = 1;            // sequence of the message that comes next
    std::string owner;                  // empty when there is none
};

struct StateColumn {
    char const* name;
    std::uint64_t jsStreamState::*value;
};
constexpr StateColumn stateColumns[] = {{"Messages", &jsStreamState::Msgs},
                                        {"Bytes", &jsStreamState::Bytes},
                                        {"First", &jsStreamState::FirstSeq},
                                        {"Last", &jsStreamState::LastSeq}};

std::string tableOf(std::vector<ShownPartition> const& partitions) {
    std::vector<host::TableRow> rows = {{"Stream"}};
    for (auto const& column : stateColumns) {
        rows.front().emplace_back(column.name);
    }
    rows.front().insert(rows.front().end(), {"Place", "Lag", "Owner"});
    for (auto const& partition : partitions) {
        host::TableRow row = {partition.name};
        for (auto const& column : stateColumns) {
            row.push_back(partition.state ? std::to_string((*partition.state).*column.value) : "-");
        }
        row.push_back(partition.state ? std::to_string(partition.place) : "-");
        row.push_back(partition.state ? std::to_string(partition.lag) : "-");
        row.push_back(!partition.state          ? "there is no such stream"
                      : partition.owner.empty() ? "-"
                                                : host::printable(partition.owner));
        rows.push_back(row);
    }
    return host::alignedTable(rows, "lrrrrrrl");
}

std::string jsonOf(std::string const& name, std::vector<ShownPartition> const& partitions) {
    static constexpr char const* none = "null";
    std::vector<std::string> elements;
    for (auto const& partition : partitions) {
        host::JsonMembers members = {{"Partition", std::to_string(partition.number)},
                                     {"Stream", host::quotedText(partition.name)}};
        for (auto const& column : stateColumns) {
            members.emplace_back(column.name, partition.state
                                                  ? std::to_string((*partition.state).*column.value)
                                                  : none);
        }
        members.emplace_back("Place", partition.state ? std::to_string(partition.place) : none);
        members.emplace_back("Lag", partition.state ? std::to_string(partition.lag) : none);
        members.emplace_back("Owner",
                             partition.owner.empty() ? none : host::quotedText(partition.owner));
        elements.push_back(host::jsonObject(members));
    }
    return host::jsonObject(
               {{"Stream", host::quotedText(name)}, {"Partitions", host::jsonArray(elements)}}) +
           "\n";
}

} // namespace

host::ExitCode createStreams(host::StreamConfiguration const& stream,
                             host::StreamLimits const& limits) {
    Connection connection(stream);
    auto const there = partitionsThere(connection, stream);
    for (std::uint64_t partition = 0; partition < stream.partitionCount; ++partition) {
        auto const* const found = there[partition].get();
        if (found == nullptr) {
            createStream(connection, stream, limits, partition);
        } else if (!partitionCountOf(*found)) {
            addPartitionCount(connection, stream, *found, partition);
        }
        std::cout << streamName(stream.name, partition)
                  << (found == nullptr ? ": made\n" : ": is there already\n");
    }
    createBucket(connection, limits, leaseBucket(stream.name), leaseTime);
    createBucket(connection, limits, placeBucket(stream.name), {});
    std::cout << std::flush;
    return std::cout ? host::done : host::inputOrOutputFailed;
}

host::ExitCode showStreams(host::StreamConfiguration const& stream, host::OutputForm form) {
    Connection connection(stream);
    auto const leases = connection.bucket(leaseBucket(stream.name));
    auto const places = connection.bucket(placeBucket(stream.name));
    std::vector<ShownPartition> partitions;
    for (std::uint64_t number = 0; number < stream.partitionCount; ++number) {
        auto& shown = partitions.emplace_back();
        shown.number = number;
        shown.name = streamName(stream.name, number);
        if (auto const info = connection.streamInfo(shown.name)) {
            requirePartitionCount(stream, *info);
            auto const place = parsePlace(valueOf(connection, places.get(), number));
            bool const isOf = place && place->created == info->Created;
            shown.state = info->State;
            shown.place = isOf ? place->sequence : shown.place;
            shown.lag = lagOf(shown.place, info->State.FirstSeq, info->State.LastSeq);
            shown.owner = valueOf(connection, leases.get(), number);
        }
    }
    std::cout << (form == host::OutputForm::json ? jsonOf(stream.name, partitions)
                                                 : tableOf(partitions))
              << std::flush;
    bool const areAllThere = std::all_of(partitions.begin(), partitions.end(),
                                         [](auto const& each) { return each.state.has_value(); });
    return !std::cout ? host::inputOrOutputFailed : areAllThere ? host::done : host::doneWithFaults;
}

} // namespace stream
