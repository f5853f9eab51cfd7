#include "registry/KeyRules.h"

#include "base/NearestName.h"

#include <algorithm>

namespace host {

namespace {

bool hasKind(YamlNode const& node, YamlNode::Kind kind) {
    return kind == YamlNode::Kind::map ? isMap(node) : node.kind == kind;
}

std::string expected(std::string_view key, YamlNode::Kind kind) {
    return "'" + std::string(key) + "' must be " + std::string(yamlKindName(kind));
}

void checkMember(YamlMember const& member, std::span<KeyRule const> rules, Problems& problems) {
    auto const rule = std::find_if(rules.begin(), rules.end(),
                                   [&](KeyRule const& each) { return each.key == member.key; });
    if (rule == rules.end()) {
        std::vector<std::string_view> known;
        for (auto const& each : rules) {
            known.push_back(each.key);
        }
        problems.add(member.position,
                     "unknown key '" + member.key + "'" + nearestNameHint(member.key, known));
    } else if (!hasKind(member.value, rule->kind)) {
        problems.add(member.position, expected(member.key, rule->kind) + ", not " +
                                          std::string(yamlKindName(member.value.kind)));
    } else if (rule->kind == YamlNode::Kind::text && member.value.text.empty()) {
        problems.add(member.position, "'" + member.key + "' needs a value");
    }
}

} // namespace

bool isMap(YamlNode const& node) {
    return node.kind == YamlNode::Kind::map ||
           (node.kind == YamlNode::Kind::text && node.text.empty());
}

void checkKeys(YamlMember const& map, std::span<KeyRule const> rules, Problems& problems) {
    if (!isMap(map.value)) {
        problems.add(map.position, expected(map.key, YamlNode::Kind::map) + ", not " +
                                       std::string(yamlKindName(map.value.kind)));
        return;
    }
    for (auto const& member : map.value.members) {
        checkMember(member, rules, problems);
    }
    for (auto const& rule : rules) {
        if (rule.presence == KeyRule::mandatory && map.value.find(rule.key) == nullptr) {
            problems.add(map.position,
                         "'" + map.key + "' lacks the key '" + std::string(rule.key) + "'");
        }
    }
}

YamlNode const* valueOf(YamlNode const& map, std::string_view key, YamlNode::Kind kind) {
    auto const* const member = map.find(key);
    return member != nullptr && hasKind(member->value, kind) ? &member->value : nullptr;
}

} // namespace host
