// A command for one registered object: a registry update.
#pragma once

#include "BAS/RegistryEntry.h"

#include <span>
#include <string>
#include <string_view>

namespace host {

struct Command {
    // Named after the object; its children are the keys of the command.
    BAS::RegistryEntry update;
};

// From a text OBJECT KEY[=VALUE]... with blanks between the parts; a part, or a piece of one, that
// has blanks must be in single or double quotes. Throws std::invalid_argument with the reason.
Command parseCommand(std::string_view text);
// From the parts.
Command parseCommand(std::span<std::string const> words);

} // namespace host
