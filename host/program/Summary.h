// The summary of a run: a table for people, or JSON for programs.
#pragma once

#include "commands/CommandExecution.h"
#include "run/PipelineRunner.h"

#include <memory>
#include <string>
#include <vector>

namespace host {

// One row for each pipeline, under a heading.
std::string summaryTable(std::vector<std::unique_ptr<PipelineRunner>> const& pipelines);

// One line with an object: "Pipelines", an array with the columns of the table, and "Commands", the
// results of the commands at the end.
std::string summaryJson(std::vector<std::unique_ptr<PipelineRunner>> const& pipelines,
                        std::vector<CommandResult> const& commands);

} // namespace host
