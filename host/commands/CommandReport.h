// The result of a command as people and programs read it.
#pragma once

#include "commands/CommandExecution.h"

#include <string>
#include <string_view>
#include <vector>

namespace host {

// For people; what stands in it from outside isn't escaped.
std::string resultText(CommandResult const& result);

// As one JSON object.
std::string resultJson(CommandResult const& result);

// The result file of a command file, in YAML.
std::string resultFileText(std::string_view commandFile, std::vector<CommandResult> const& results);
// The same for a command file of which nothing could be carried out.
std::string problemFileText(std::string_view commandFile, std::vector<std::string> const& problems);

} // namespace host
