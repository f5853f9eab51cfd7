// The EDR description: the tree of block kinds and the fields of each. The root kind is "DETAIL",
// of which every EDR has exactly one block; every other kind repeats within a block of its parent
// kind. Built once, then only read, from any thread; it must outlive the factory and the containers
// that use it.
#pragma once

#include "BAS/String.h"
#include "EDR/BlockIndex.h"
#include "EDR/Index.h"

#include <unordered_map>
#include <vector>

namespace EDR {

enum class FieldType { text, number, dateTime };

class Description {
public:
    struct Field {
        BAS::String path;
        FieldType type;
    };
    // The place of a block kind in the tree.
    struct Place {
        std::uint32_t kind;
        // Number of the parent kind; the root is its own parent.
        std::uint32_t parent;
        // Position among the parent kind's children.
        std::uint32_t position;

        friend bool operator==(Place const&, Place const&) = default;
    };
    struct BlockKind {
        BAS::String path;
        Place place;
        std::vector<Field> fields;
        std::vector<std::uint32_t> children;
        // The kinds from the one below the root down to this one; empty for the root.
        std::vector<Place> lineage;
        // Every kind below this one, parents before their children.
        std::vector<Place> descendants;
    };

    Description();

    static BlockIndex root() noexcept { return BlockIndex(0); }

    // Add a block kind or a field, named by its last path part, below a block kind. Throw
    // std::invalid_argument when the path exists already.
    BlockIndex addBlock(BlockIndex const& parent, BAS::String const& name);
    Index addField(BlockIndex const& block, BAS::String const& name, FieldType type);

    // By full dotted path; a handle that is not valid when there is no such field or block.
    Index findField(BAS::String const& path) const;
    BlockIndex findBlock(BAS::String const& path) const;

    std::vector<BlockKind> const& blockKinds() const noexcept { return blockKindsM; }

private:
    void requireNewPath(BAS::String const& path) const;

    std::vector<BlockKind> blockKindsM;
    std::unordered_map<BAS::String, Index> fieldsM;
    std::unordered_map<BAS::String, BlockIndex> blocksM;
};

} // namespace EDR
