// A command for one registered object: the registry update that it brings.
#pragma once

#include "BAS/RegistryEntry.h"

#include <span>
#include <string>
#include <string_view>

namespace host {

struct Command {
    // Has the name of the object; the keys of the command stand directly below.
    BAS::RegistryEntry update;
};

// From a text OBJECT KEY[=VALUE]... with blanks between the parts; a part, or a piece of one, that
// holds blanks stands in single or double quotes. Throws std::invalid_argument with what is wrong.
Command parseCommand(std::string_view text);
// From the parts.
Command parseCommand(std::span<std::string const> words);

} // namespace host
