#include "watch/StatusText.h"

#include "base/EscapedText.h"
#include "base/JsonText.h"
#include "base/TimeText.h"
#include "commands/CommandReport.h"

#include <fmt/format.h>
#include <unistd.h>

namespace host {

namespace {

constexpr char const* none = "null";

std::string number(double value) {
    return fmt::format("{:.3f}", value);
}

template <class Each, class Json>
std::string arrayOf(std::vector<Each> const& each, Json json) {
    std::vector<std::string> elements;
    elements.reserve(each.size());
    for (auto const& one : each) {
        elements.push_back(json(one));
    }
    return jsonArray(elements);
}

std::string countsByValue(PipelineStatus const& pipeline) {
    JsonMembers values;
    for (auto const& [value, count] : pipeline.state.detailsByValue) {
        values.emplace_back(value, std::to_string(count));
    }
    return jsonObject({{"Field", quotedText(pipeline.countBy)},
                       {"Values", jsonObject(values)},
                       {"Other", std::to_string(pipeline.state.otherDetails)}});
}

// Null for other inputs than streams.
std::string partitionsJson(std::vector<PartitionState> const& partitions) {
    return partitions.empty() ? none : arrayOf(partitions, [](PartitionState const& partition) {
        return jsonObject({{"Partition", std::to_string(partition.number)},
                           {"Owned", jsonTruth(partition.isOwned)},
                           {"Sequence", std::to_string(partition.sequence)},
                           {"Lag", std::to_string(partition.lag)}});
    });
}

std::string pipelineJson(PipelineStatus const& pipeline) {
    JsonMembers members = {{"Pipeline", quotedText(pipeline.name)}};
    for (auto const& each : counterMembers) {
        members.emplace_back(each.name, std::to_string(pipeline.state.counters.*each.counter));
    }
    auto const& state = pipeline.state;
    members.emplace_back("EdrsPerSecond", fmt::format("{:.1f}", pipeline.edrsPerSecond));
    members.emplace_back("SecondsSinceBatch",
                         pipeline.secondsSinceBatch ? number(*pipeline.secondsSinceBatch) : none);
    members.emplace_back("Input", state.file.empty()
                                      ? none
                                      : jsonObject({{"File", quotedText(state.file)},
                                                    {"Byte", std::to_string(state.byte)}}));
    members.emplace_back("Partitions", partitionsJson(state.partitions));
    auto const& atWork = pipeline.plugInAtWork;
    members.emplace_back("PlugInAtWork", atWork
                                             ? jsonObject({{"Object", quotedText(atWork->object)},
                                                           {"Seconds", number(atWork->seconds)}})
                                             : none);
    members.emplace_back("CountBy", pipeline.countBy.empty() ? none : countsByValue(pipeline));
    return jsonObject(members);
}

std::string loadJson(DAT::LoadReport const& load) {
    std::vector<std::string> tables;
    for (auto const& table : load.tables) {
        tables.push_back(jsonObject({{"Table", quotedText(table.name.view())},
                                     {"Rows", std::to_string(table.rows)},
                                     {"Rejected", std::to_string(table.rejected)}}));
    }
    return jsonObject({{"Time", jsonTime(load.time)},
                       {"Seconds", number(load.seconds)},
                       {"Source", quotedText(load.source.view())},
                       {"Rows", std::to_string(load.rows())},
                       {"Rejected", std::to_string(load.rejected())},
                       {"Tables", jsonArray(tables)}});
}

std::string objectJson(ObjectStatus const& object) {
    JsonMembers members = {{"Object", quotedText(object.name)}, {"Kind", quotedText(object.kind)}};
    if (!object.moduleName.empty()) {
        members.emplace_back("ModuleName", quotedText(object.moduleName));
    }
    members.emplace_back("Valid", jsonTruth(object.isValid));
    members.emplace_back("Status",
                         object.status.messageName().isNull() ? none : jsonStatus(object.status));
    if (object.load) {
        members.emplace_back("Loaded", loadJson(*object.load));
    }
    return jsonObject(members);
}

} // namespace

std::string statusJson(HostStatus const& status) {
    auto const secondsUntil = [&](std::chrono::system_clock::time_point since) {
        return number(unixSeconds(status.time) - unixSeconds(since));
    };
    return jsonObject({{"Version", quotedText(status.version)},
                       {"Process", std::to_string(::getpid())},
                       {"Registry", quotedText(status.registry.string())},
                       {"Since", jsonTime(status.since)},
                       {"Time", jsonTime(status.time)},
                       {"UnixTime", number(unixSeconds(status.time))},
                       {"Seconds", secondsUntil(status.since)},
                       {"Pipelines", arrayOf(status.pipelines, &pipelineJson)},
                       {"Objects", arrayOf(status.objects, &objectJson)},
                       {"CommandsInProgress",
                        arrayOf(status.commandsInProgress,
                                [&](JournalEntry const& command) {
                                    return jsonObject(
                                        {{"Object", quotedText(command.result.object)},
                                         {"Keys", keysJson(command.result)},
                                         {"Since", jsonTime(command.time)},
                                         {"Seconds", secondsUntil(command.time)}});
                                })},
                       {"LastCommands", arrayOf(status.lastCommands,
                                                [](JournalEntry const& command) {
                                                    return jsonObject(
                                                        {{"Time", jsonTime(command.time)},
                                                         {"Result", resultJson(command.result)}});
                                                })}}) +
           "\n";
}

} // namespace host
