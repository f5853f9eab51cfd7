// A YAML file as a tree of texts with their places. A null is the empty text.
#pragma once

#include "base/Problems.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace host {

struct YamlMember;

struct YamlNode {
    enum class Kind { text, map, sequence };

    Kind kind = Kind::text;
    FilePosition position;
    std::string text;
    std::vector<YamlMember> members; // of a map, in the order of the file
    std::vector<YamlNode> items;     // of a sequence

    // The member of that key, or null.
    YamlMember const* find(std::string_view key) const;
};

struct YamlMember {
    std::string key;
    FilePosition position; // of the key
    YamlNode value;
};

// The name of a kind of node in messages.
std::string_view yamlKindName(YamlNode::Kind kind);

// Reads a file of one document. A key that is given twice, a key that isn't a text, an alias and a
// second document are added to the problems. Throws a BAS::Status when the file can't be read, and
// a StartFailure with the problems so far when it is empty, not valid UTF-8 or not valid YAML.
YamlNode readYamlFile(std::filesystem::path const& file, Problems& problems);
// The same from the bytes of a file.
YamlNode readYaml(std::string const& bytes, Problems& problems);

} // namespace host
