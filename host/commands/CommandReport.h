// The result of a command as text, JSON and YAML.
#pragma once

#include "commands/CommandExecution.h"

#include <string>
#include <string_view>
#include <vector>

namespace host {

// For people; texts from outside aren't escaped.
std::string resultText(CommandResult const& result);

// As one JSON object.
std::string resultJson(CommandResult const& result);
// Its keys with their values, as one JSON object.
std::string keysJson(CommandResult const& result);

// The result file of a command file, in YAML.
std::string resultFileText(std::string_view commandFile, std::vector<CommandResult> const& results);
// The same for a command file that is rejected.
std::string problemFileText(std::string_view commandFile, std::vector<std::string> const& problems);

// The text of a result file as one line of JSON with the same members.
std::string resultFileJson(std::string_view resultFile);

} // namespace host
