#include "program/Summary.h"

#include "base/EscapedText.h"
#include "base/TextTable.h"
#include "commands/CommandReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace host {

namespace {

struct Column {
    char const* heading;
    char const* jsonName;
    std::string (*value)(PipelineCounters const&);
};

template <std::uint64_t PipelineCounters::*counter>
std::string count(PipelineCounters const& counters) {
    return std::to_string(counters.*counter);
}

std::string seconds(PipelineCounters const& counters) {
    return fmt::format("{:.3f}", counters.seconds);
}

std::string rate(PipelineCounters const& counters) {
    return fmt::format("{:.0f}", counters.seconds > 0
                                     ? static_cast<double>(counters.read) / counters.seconds
                                     : 0.0);
}

constexpr std::array columns = {
    Column{"Read", "Read", &count<&PipelineCounters::read>},
    Column{"Details", "Details", &count<&PipelineCounters::details>},
    Column{"Rejected", "Rejected", &count<&PipelineCounters::rejected>},
    Column{"Failed inputs", "FailedInputs", &count<&PipelineCounters::failedInputs>},
    Column{"Batches", "Batches", &count<&PipelineCounters::batches>},
    Column{"Faults", "Faults", &count<&PipelineCounters::faults>},
    Column{"Seconds", "Seconds", &seconds},
    Column{"EDRs/s", "EdrsPerSecond", &rate},
    Column{"Commands", "Commands", &count<&PipelineCounters::commands>},
};

std::string pipelineJson(PipelineRunner const& pipeline) {
    auto const counters = pipeline.counters();
    auto text = "{\"Pipeline\": " + quotedText(pipeline.configuration().name);
    for (auto const& column : columns) {
        text += fmt::format(", \"{}\": {}", column.jsonName, column.value(counters));
    }
    return text + "}";
}

} // namespace

std::string summaryTable(std::vector<std::unique_ptr<PipelineRunner>> const& pipelines) {
    std::vector<TableRow> rows = {{"Pipeline"}};
    for (auto const& column : columns) {
        rows.front().push_back(column.heading);
    }
    for (auto const& pipeline : pipelines) {
        auto const counters = pipeline->counters();
        rows.push_back({pipeline->configuration().name});
        for (auto const& column : columns) {
            rows.back().push_back(column.value(counters));
        }
    }
    return alignedTable(rows, "l" + std::string(columns.size(), 'r'));
}

std::string summaryJson(std::vector<std::unique_ptr<PipelineRunner>> const& pipelines,
                        std::vector<CommandResult> const& commands) {
    std::vector<std::string> pipelineParts;
    pipelineParts.reserve(pipelines.size());
    for (auto const& pipeline : pipelines) {
        pipelineParts.push_back(pipelineJson(*pipeline));
    }
    std::vector<std::string> commandParts;
    commandParts.reserve(commands.size());
    for (auto const& command : commands) {
        commandParts.push_back(resultJson(command));
    }
    return fmt::format("{{\"Pipelines\": [{}], \"Commands\": [{}]}}\n",
                       fmt::join(pipelineParts, ", "), fmt::join(commandParts, ", "));
}

} // namespace host
