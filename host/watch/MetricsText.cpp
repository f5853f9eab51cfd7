#include "watch/MetricsText.h"

#include "base/TimeText.h"

#include <fmt/format.h>

#include <utility>

namespace host {

namespace {

using Labels = std::vector<std::pair<std::string_view, std::string>>;

struct Metric {
    char const* name;
    char const* type;
    char const* help;
};

// What is counted for each pipeline.
struct PipelineMetric {
    Metric metric;
    std::uint64_t PipelineCounters::*counter;
};
constexpr PipelineMetric pipelineMetrics[] = {
    {{"pipeline_host_edrs_read_total", "counter", "EDRs of all kinds that were processed."},
     &PipelineCounters::read},
    {{"pipeline_host_edr_details_total", "counter", "Detail EDRs that were processed."},
     &PipelineCounters::details},
    {{"pipeline_host_rejected_lines_total", "counter", "Input lines that couldn't be taken."},
     &PipelineCounters::rejected},
    {{"pipeline_host_plugin_faults_total", "counter", "Exceptions that left a plug-in."},
     &PipelineCounters::faults},
    {{"pipeline_host_failed_inputs_total", "counter", "Inputs that couldn't be read."},
     &PipelineCounters::failedInputs},
    {{"pipeline_host_batches_total", "counter", "Batches that were processed."},
     &PipelineCounters::batches},
    {{"pipeline_host_input_bytes_total", "counter",
      "Bytes that were read of input files, compressed as they may be."},
     &PipelineCounters::bytes},
    {{"pipeline_host_commands_total", "counter", "Commands for objects of the pipeline."},
     &PipelineCounters::commands},
};

constexpr Metric info = {"pipeline_host_info", "gauge", "The version of the host, as a label."};
constexpr Metric startTime = {"pipeline_host_start_time_seconds", "gauge",
                              "When the host had started, since 1970."};
constexpr Metric lastBatch = {"pipeline_host_last_batch_timestamp_seconds", "gauge",
                              "When the last batch was processed, since 1970."};
constexpr Metric byValue = {
    "pipeline_host_details_by_value_total", "counter",
    "Detail EDRs by the value of the field to count by; further values as 'other'."};
constexpr Metric lag = {"pipeline_host_stream_lag_messages", "gauge",
                        "Messages of a partition that wait, as far as the host knows."};
constexpr Metric isOwned = {"pipeline_host_stream_partition_owned", "gauge",
                            "Whether a partition is read by this host."};
constexpr Metric isValid = {"pipeline_host_object_valid", "gauge",
                            "Whether a registered object is valid."};
constexpr Metric loadTime = {"pipeline_host_data_load_timestamp_seconds", "gauge",
                             "When reading of a module's data began, since 1970."};
constexpr Metric loadSeconds = {"pipeline_host_data_load_duration_seconds", "gauge",
                                "How long reading of a module's data took."};
constexpr Metric dataRows = {"pipeline_host_data_rows", "gauge",
                             "Rows of a table that a data module holds."};
constexpr Metric rejectedRows = {"pipeline_host_data_rejected_rows", "gauge",
                                 "Rows of a table that a data module left out."};
constexpr Metric inProgress = {"pipeline_host_commands_in_progress", "gauge",
                               "Commands that are being carried out."};

std::string escaped(std::string_view value) {
    std::string text;
    for (char const c : value) {
        if (c == '\\' || c == '"' || c == '\n') {
            text += '\\';
        }
        text += c == '\n' ? 'n' : c;
    }
    return text;
}

class Writer {
public:
    void begin(Metric const& metric) {
        nameM = metric.name;
        textM += fmt::format("# HELP {} {}\n# TYPE {} {}\n", metric.name, metric.help, metric.name,
                             metric.type);
    }

    template <class Value>
    void sample(Labels const& labels, Value value) {
        std::string shown;
        for (auto const& [label, text] : labels) {
            shown += fmt::format("{}{}=\"{}\"", shown.empty() ? "" : ",", label, escaped(text));
        }
        textM += fmt::format("{}{} {}\n", nameM, shown.empty() ? "" : "{" + shown + "}", value);
    }

    std::string take() { return std::move(textM); }

private:
    char const* nameM = "";
    std::string textM;
};

void writePipelines(Writer& writer, std::vector<PipelineStatus> const& pipelines) {
    for (auto const& each : pipelineMetrics) {
        writer.begin(each.metric);
        for (auto const& pipeline : pipelines) {
            writer.sample({{"pipeline", pipeline.name}}, pipeline.state.counters.*each.counter);
        }
    }
}

void writeLastBatches(Writer& writer, HostStatus const& status) {
    writer.begin(lastBatch);
    for (auto const& pipeline : status.pipelines) {
        if (pipeline.secondsSinceBatch) {
            writer.sample(
                {{"pipeline", pipeline.name}},
                fmt::format("{:.3f}", unixSeconds(status.time) - *pipeline.secondsSinceBatch));
        }
    }
}

// A value that is called like the rest of them is counted with them.
void writeCountsByValue(Writer& writer, std::vector<PipelineStatus> const& pipelines) {
    static constexpr char const* rest = "other";
    writer.begin(byValue);
    for (auto const& pipeline : pipelines) {
        if (pipeline.countBy.empty()) {
            continue;
        }
        auto counts = pipeline.state.detailsByValue;
        counts[rest] += pipeline.state.otherDetails;
        for (auto const& [value, count] : counts) {
            writer.sample(
                {{"pipeline", pipeline.name}, {"field", pipeline.countBy}, {"value", value}},
                count);
        }
    }
}

template <class Value>
void writePartitions(Writer& writer, std::vector<PipelineStatus> const& pipelines,
                     Metric const& metric, Value const& value) {
    writer.begin(metric);
    for (auto const& pipeline : pipelines) {
        for (auto const& partition : pipeline.state.partitions) {
            writer.sample(
                {{"pipeline", pipeline.name}, {"partition", std::to_string(partition.number)}},
                value(partition));
        }
    }
}

void writeObjects(Writer& writer, std::vector<ObjectStatus> const& objects) {
    writer.begin(isValid);
    for (auto const& object : objects) {
        writer.sample({{"object", object.name}, {"kind", object.kind}}, object.isValid ? 1 : 0);
    }
    writer.begin(loadTime);
    for (auto const& object : objects) {
        if (object.load) {
            writer.sample({{"object", object.name}},
                          fmt::format("{:.3f}", unixSeconds(object.load->time)));
        }
    }
    writer.begin(loadSeconds);
    for (auto const& object : objects) {
        if (object.load) {
            writer.sample({{"object", object.name}}, fmt::format("{:.3f}", object.load->seconds));
        }
    }
}

void writeTables(Writer& writer, std::vector<ObjectStatus> const& objects, Metric const& metric,
                 std::size_t DAT::LoadedTable::*count) {
    writer.begin(metric);
    for (auto const& object : objects) {
        if (!object.load) {
            continue;
        }
        for (auto const& table : object.load->tables) {
            writer.sample({{"object", object.name}, {"table", table.name.str()}}, table.*count);
        }
    }
}

} // namespace

std::string metricsText(HostStatus const& status) {
    Writer writer;
    writer.begin(info);
    writer.sample({{"version", status.version}, {"registry", status.registry.string()}}, 1);
    writer.begin(startTime);
    writer.sample({}, fmt::format("{:.3f}", unixSeconds(status.since)));
    writePipelines(writer, status.pipelines);
    writeLastBatches(writer, status);
    writeCountsByValue(writer, status.pipelines);
    writePartitions(writer, status.pipelines, lag,
                    [](PartitionState const& partition) { return partition.lag; });
    writePartitions(writer, status.pipelines, isOwned,
                    [](PartitionState const& partition) { return partition.isOwned ? 1 : 0; });
    writeObjects(writer, status.objects);
    writeTables(writer, status.objects, dataRows, &DAT::LoadedTable::rows);
    writeTables(writer, status.objects, rejectedRows, &DAT::LoadedTable::rejected);
    writer.begin(inProgress);
    writer.sample({}, status.commandsInProgress.size());
    return writer.take();
}

} // namespace host
