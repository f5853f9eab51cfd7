#include "registry/EdrDescriptionFile.h"

#include "base/YamlTree.h"

#include <algorithm>
#include <array>

namespace host {

namespace {

constexpr char const* rootName = "DETAIL";

struct FieldTypeName {
    std::string_view name;
    EDR::FieldType type;
};
constexpr std::array fieldTypes = {
    FieldTypeName{"text", EDR::FieldType::text},
    FieldTypeName{"long", EDR::FieldType::number},
    FieldTypeName{"datetime", EDR::FieldType::dateTime},
};

class DescriptionReader {
public:
    explicit DescriptionReader(Problems& problems) : problemsM(problems) {}

    EDR::Description read(YamlNode const& document) {
        auto const* const root = document.find(rootName);
        if (root == nullptr || document.members.size() != 1 ||
            root->value.kind != YamlNode::Kind::map) {
            problemsM.add(root == nullptr ? document.position : root->position,
                          "an EDR description must be one mapping named 'DETAIL'");
            return {};
        }
        if (auto const* const reserved = root->value.find(recordMember)) {
            problemsM.add(reserved->position,
                          "'RECORD' names the kind of a record and can't be a field");
        }
        addMembers(EDR::Description::root(), root->value);
        return std::move(descriptionM);
    }

private:
    void addMembers(EDR::BlockIndex const& block, YamlNode const& map) {
        for (auto const& member : map.members) {
            if (member.key.empty() || member.key.find('.') != std::string::npos) {
                problemsM.add(member.position,
                              "'" + member.key + "' can't be a name: expected a text without dots");
                continue;
            }
            addMember(block, member);
        }
    }

    void addMember(EDR::BlockIndex const& block, YamlMember const& member) {
        switch (member.value.kind) {
        case YamlNode::Kind::map:
            addMembers(descriptionM.addBlock(block, member.key), member.value);
            return;
        case YamlNode::Kind::text:
            addField(block, member);
            return;
        case YamlNode::Kind::sequence:
            problemsM.add(
                member.position,
                "'" + member.key +
                    "' must be a field's type or, for a block, a mapping, not a sequence");
        }
    }

    void addField(EDR::BlockIndex const& block, YamlMember const& member) {
        auto const type =
            std::find_if(fieldTypes.begin(), fieldTypes.end(),
                         [&](FieldTypeName const& each) { return each.name == member.value.text; });
        if (type == fieldTypes.end()) {
            problemsM.add(member.value.text.empty() ? member.position : member.value.position,
                          "the field '" + member.key + "' has the unknown type '" +
                              member.value.text + "': expected 'text', 'long' or 'datetime'");
            return;
        }
        descriptionM.addField(block, member.key, type->type);
    }

    Problems& problemsM;
    EDR::Description descriptionM;
};

} // namespace

EDR::Description readEdrDescription(std::filesystem::path const& file) {
    Problems problems(file);
    auto const document = readYamlFile(file, problems);
    auto description = DescriptionReader(problems).read(document);
    problems.throwIfAny();
    return description;
}

} // namespace host
