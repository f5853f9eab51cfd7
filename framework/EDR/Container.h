// One event detail record: a tree of blocks with text fields, laid out by an EDR::Description.
//
// All blocks are in one array and all their fields in another, both in the order of the record, so
// that a read by handle is array access: no map, no string comparison, no allocation, and the text
// is returned by constant reference. The reference is valid until the container is filled again.
// Whoever reads an EDR mostly waits for memory: what all EDRs have in common stays in the
// description, and what is read together lies together.
//
// The host owns and fills containers: clear, then add and set in the order of the record. clear
// keeps all storage. The description must outlive the container. A container is used by one thread
// at a time; reading through iterators moves its block cursors.
#pragma once

#include "BAS/DateTime.h"
#include "BAS/String.h"
#include "EDR/BlockIndex.h"
#include "EDR/Description.h"
#include "EDR/Index.h"
#include "RW/RWTValOrderedVector.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace EDR {

enum RecordKind : int { headerRecord = 1, trailerRecord = 2, detailRecord = 3 };

class Container {
public:
    explicit Container(Description const& description);
    Container(Container const&) = delete;
    Container& operator=(Container const&) = delete;
    virtual ~Container() = default;

    int recordKind() const noexcept { return recordKindM; }

    // Read a field in the first block at every level. A missing field reads as empty text or 0, and
    // a text that isn't a number or date-time as 0.
    virtual BAS::String const& getString(Index const& field) const;
    virtual long getLong(Index const& field) const;
    virtual BAS::DateTime getDateTime(Index const& field) const;

    // Read a field with one zero-based block position for each block level below the root along
    // its path, outermost first. Positions that are missing are 0; one that is out of range reads
    // as empty.
    virtual BAS::String const& getString(Index const& field,
                                         RWTValOrderedVector<long> const& positions) const;

    // Filling. clear leaves a record of that kind with only an empty root block.
    void clear(RecordKind kind);
    void setRecordKind(RecordKind kind) noexcept { recordKindM = kind; }
    // Appends a block to the last block of the parent kind, which must exist.
    void addBlock(BlockIndex const& block);
    // Sets a field in the last block of its kind, which must exist.
    void setField(Index const& field, std::string_view text);

private:
    friend class Iterator;

    struct Cell {
        BAS::String text;
        // The value of a field that is described as a number or as a date-time (seconds of
        // BAS::DateTime).
        long number = 0;
    };
    // In place of a block's number: no block; and in a cursor, to which no step brings the root,
    // the first block within the current one of the parent kind.
    static constexpr std::uint32_t none = UINT32_MAX;
    static constexpr std::uint32_t theFirst = 0;

    struct Links {
        // The next block of the same kind below the same parent.
        std::uint32_t next;
        // Where in firstChildrenM the first blocks below this one are, one for each child kind; not
        // 0. Blocks of one kind have it in common only when their parent is the same.
        std::uint32_t firstChildren;
    };
    struct Block {
        std::uint32_t firstCell;
        Links links;
    };
    // The position of iterators among the blocks of one kind. Before the first block it is all 0,
    // which is quickly written.
    struct Cursor {
        // The cells of the block; null before the first block and past the last.
        Cell const* cells = nullptr;
        // Those of the block. Without a block, firstChildren is 0.
        Links links{theFirst, 0};

        bool isAtBlock() const noexcept { return links.firstChildren != 0; }
    };

    // The last block of a kind, with its first cell.
    struct LastBlock {
        std::uint32_t number;
        std::uint32_t firstCell;
    };

    Description::BlockKind const& kindOf(ContainerIndex const& index) const noexcept {
        return kindsM[index.blockKind()];
    }
    Cell const* cellsOf(std::uint32_t block) const noexcept {
        return cellsM.data() + blocksM[block].firstCell;
    }
    std::uint32_t firstChild(Links const& parent, Description::Place const& place) const noexcept {
        return firstChildrenM[parent.firstChildren + place.position];
    }
    // What a field is described as; the handle must be valid.
    FieldType typeOf(Index const& field) const noexcept {
        return kindOf(field).fields[field.field()].type;
    }
    Cell const* firstCell(Index const& field) const noexcept;
    // The number that a cell's text makes; 0 when there is no cell.
    long numberOf(Cell const* cell, Index const& field) const;

    std::uint32_t append(Description::BlockKind const& kind);
    void growCells();
    [[noreturn]] void failWithoutBlock(Index const& field) const;
    static long valueOf(FieldType type, std::string_view text) noexcept;

    // The block within which the kinds below are walked, or null. What was never stepped counts as
    // at its first block.
    Links const* currentBlock(std::uint32_t kind) const noexcept;
    void rewindWithAncestors(BlockIndex const& block) noexcept;
    // Of a kind other than the root.
    bool advance(BlockIndex const& block) noexcept;
    bool advanceBelowUnstepped(Description::Place const& place) noexcept;
    bool moveTo(std::uint32_t block, Cursor& cursor) const noexcept;
    Cell const* cellAtCursor(Index const& field) const noexcept;

    // By block kind, the description's.
    Description::BlockKind const* kindsM;
    std::vector<Cell> cellsM;
    std::vector<Block> blocksM;
    // The first place isn't used.
    std::vector<std::uint32_t> firstChildrenM;
    // By block kind.
    std::vector<Cursor> cursorsM;
    int recordKindM = detailRecord;
    // While it is filled: the cells in use, and by block kind the last block.
    std::uint32_t cellCountM = 0;
    std::vector<LastBlock> lastBlocksM;
};

// Inline, for they are what every field that is set, every read and every step comes down to.
inline void Container::setField(Index const& field, std::string_view text) {
    auto const& last = lastBlocksM[field.blockKind()];
    if (last.number == none) {
        failWithoutBlock(field);
    }
    auto& cell = cellsM[last.firstCell + field.field()];
    cell.text.assign(text);
    if (auto const type = typeOf(field); type != FieldType::text) {
        cell.number = valueOf(type, text);
    }
}

inline void Container::rewindWithAncestors(BlockIndex const& block) noexcept {
    for (auto const& place : kindOf(block).lineage) {
        cursorsM[place.kind] = Cursor();
    }
}

inline bool Container::moveTo(std::uint32_t block, Cursor& cursor) const noexcept {
    if (block == none) {
        cursor = {nullptr, {none, 0}};
        return false;
    }
    cursor = {cellsOf(block), blocksM[block].links};
    return true;
}

inline bool Container::advance(BlockIndex const& block) noexcept {
    auto const& kind = kindOf(block);
    for (auto const& below : kind.descendants) {
        cursorsM[below.kind] = Cursor();
    }
    auto& cursor = cursorsM[block.blockKind()];
    auto next = cursor.links.next;
    if (next == theFirst) {
        auto const& parent = cursorsM[kind.place.parent];
        if (!parent.isAtBlock()) {
            return advanceBelowUnstepped(kind.place);
        }
        next = firstChild(parent.links, kind.place);
    }
    return moveTo(next, cursor);
}

inline Container::Cell const* Container::cellAtCursor(Index const& field) const noexcept {
    if (!field.isValid()) {
        return nullptr;
    }
    auto const* const cells = cursorsM[field.blockKind()].cells;
    return cells == nullptr ? nullptr : cells + field.field();
}

} // namespace EDR
