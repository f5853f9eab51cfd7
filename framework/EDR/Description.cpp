#include "EDR/Description.h"

#include <stdexcept>

namespace EDR {

Description::Description() : blockKindsM{{"DETAIL", {0, 0, 0}, {}, {}, {}, {}}} {
    blocksM.emplace("DETAIL", root());
}

BlockIndex Description::addBlock(BlockIndex const& parent, BAS::String const& name) {
    auto const path = blockKindsM.at(parent.blockKind()).path + "." + name;
    requireNewPath(path);
    Place const place{static_cast<std::uint32_t>(blockKindsM.size()), parent.blockKind(),
                      static_cast<std::uint32_t>(blockKindsM[parent.blockKind()].children.size())};
    auto lineage = blockKindsM[parent.blockKind()].lineage;
    for (auto const& ancestor : lineage) {
        blockKindsM[ancestor.kind].descendants.push_back(place);
    }
    blockKindsM[root().blockKind()].descendants.push_back(place);
    blockKindsM[parent.blockKind()].children.push_back(place.kind);
    lineage.push_back(place);
    blockKindsM.push_back({path, place, {}, {}, std::move(lineage), {}});
    BlockIndex const block(place.kind);
    blocksM.emplace(path, block);
    return block;
}

Index Description::addField(BlockIndex const& block, BAS::String const& name, FieldType type) {
    auto& kind = blockKindsM.at(block.blockKind());
    auto const path = kind.path + "." + name;
    requireNewPath(path);
    Index const field(block.blockKind(), static_cast<std::uint32_t>(kind.fields.size()));
    kind.fields.push_back({path, type});
    fieldsM.emplace(path, field);
    return field;
}

Index Description::findField(BAS::String const& path) const {
    auto const found = fieldsM.find(path);
    return found == fieldsM.end() ? Index() : found->second;
}

BlockIndex Description::findBlock(BAS::String const& path) const {
    auto const found = blocksM.find(path);
    return found == blocksM.end() ? BlockIndex() : found->second;
}

void Description::requireNewPath(BAS::String const& path) const {
    if (fieldsM.contains(path) || blocksM.contains(path)) {
        throw std::invalid_argument("'" + path.str() + "' is described twice");
    }
}

} // namespace EDR
