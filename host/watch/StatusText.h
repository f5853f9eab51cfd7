// The status of a host as one JSON object, for programs, and what people read instead.
#pragma once

#include "watch/HostStatus.h"

#include <string>
#include <string_view>

namespace host {

// What the status of a pipeline counts.
struct CounterMember {
    char const* name;
    char const* heading;
    std::uint64_t PipelineCounters::*counter;
};
inline constexpr CounterMember counterMembers[] = {
    {"Read", "Read", &PipelineCounters::read},
    {"Details", "Details", &PipelineCounters::details},
    {"Rejected", "Rejected", &PipelineCounters::rejected},
    {"Faults", "Faults", &PipelineCounters::faults},
    {"FailedInputs", "Failed inputs", &PipelineCounters::failedInputs},
    {"Batches", "Batches", &PipelineCounters::batches},
    {"Commands", "Commands", &PipelineCounters::commands},
};

// One line.
std::string statusJson(HostStatus const& status);

// The tables that show such a line at that time. Throws std::runtime_error when it isn't one.
std::string statusTables(std::string_view json, std::chrono::system_clock::time_point now);

} // namespace host
