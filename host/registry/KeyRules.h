// Which keys a mapping of the host's own takes, as constant tables, and the check of a mapping
// against such a table.
#pragma once

#include "base/YamlTree.h"

#include <span>
#include <string_view>

namespace host {

struct KeyRule {
    std::string_view key;
    YamlNode::Kind kind;
    enum { mandatory, optional } presence;
};

// Adds a problem for every unknown key (with the nearest known one), missing key and value of the
// wrong shape, and for a map that is none. An empty value passes as a mapping without keys. The
// map is called by its place in messages.
void checkKeys(YamlMember const& map, std::span<KeyRule const> rules, Problems& problems);

// The value of a key if it is there and of the kind, else null.
YamlNode const* valueOf(YamlNode const& map, std::string_view key, YamlNode::Kind kind);

// True for a mapping, and for an empty value, which is one without keys.
bool isMap(YamlNode const& node);

} // namespace host
