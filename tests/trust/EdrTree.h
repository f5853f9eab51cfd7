// An EDR as a plain tree of texts, to make or read one without the framework.
#pragma once

#include "EDR/Container.h"
#include "EDR/Description.h"

#include <map>
#include <string>
#include <vector>

namespace trust {

// Fields and blocks are named by the last part of their path. What isn't there isn't in the map.
struct EdrBlock {
    std::map<std::string, std::string> fields;
    std::map<std::string, std::vector<EdrBlock>> blocks;
};

struct EdrTree {
    int recordKind = EDR::detailRecord;
    EdrBlock detail;
};

inline std::string lastPart(BAS::String const& path) {
    return path.str().substr(path.str().rfind('.') + 1);
}

// Puts a block's fields and the blocks below it into the container, whose last block of that kind
// it is.
inline void fillBlock(EDR::Container& container, EDR::Description const& description,
                      std::uint32_t kind, EdrBlock const& block) {
    auto const& described = description.blockKinds()[kind];
    for (std::uint32_t field = 0; field < described.fields.size(); ++field) {
        auto const found = block.fields.find(lastPart(described.fields[field].path));
        if (found != block.fields.end()) {
            container.setField(EDR::Index(kind, field), found->second);
        }
    }
    for (auto const child : described.children) {
        auto const found = block.blocks.find(lastPart(description.blockKinds()[child].path));
        if (found == block.blocks.end()) {
            continue;
        }
        for (auto const& below : found->second) {
            container.addBlock(EDR::BlockIndex(child));
            fillBlock(container, description, child, below);
        }
    }
}

inline void fill(EDR::Container& container, EDR::Description const& description,
                 EdrTree const& edr) {
    container.clear(static_cast<EDR::RecordKind>(edr.recordKind));
    fillBlock(container, description, EDR::Description::root().blockKind(), edr.detail);
}

} // namespace trust
