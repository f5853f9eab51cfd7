#include "program/Summary.h"

#include "base/EscapedText.h"
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

using Row = std::vector<std::string>;

// The first column to the left, the numbers to the right.
std::string aligned(std::vector<Row> const& rows) {
    std::vector<std::size_t> widths(rows.front().size(), 0);
    for (auto const& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], row[i].size());
        }
    }
    std::string text;
    for (auto const& row : rows) {
        text += fmt::format("{:<{}}", row[0], widths[0]);
        for (std::size_t i = 1; i < row.size(); ++i) {
            text += fmt::format("  {:>{}}", row[i], widths[i]);
        }
        text += "\n";
    }
    return text;
}

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
    std::vector<Row> rows = {{"Pipeline"}};
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
    return aligned(rows);
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
