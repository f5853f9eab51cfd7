// One event detail record: a tree of blocks with text fields, laid out by an EDR::Description.
//
// The blocks of one kind are in one array in the order in which they were added, and those of one
// parent block next to each other, so that a read by handle is array access: no map, no string
// comparison, no allocation, and the text is returned by constant reference. The reference is valid
// until the container is filled again.
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
#include <span>
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
    // Marks in place of a block; no block has such a number.
    static constexpr std::uint32_t beforeFirst = UINT32_MAX;
    static constexpr std::uint32_t pastLast = UINT32_MAX - 1;

    struct Cursor;
    struct BlockRange {
        std::uint32_t begin;
        std::uint32_t end;
    };
    // All blocks of one kind. Those below block p of the parent kind begin at boundaries[p] and end
    // before boundaries[p + 1].
    struct BlockStore {
        std::uint32_t parent = 0;
        std::uint32_t fieldCount = 0;
        std::uint32_t count = 0;
        // Whether the first block lies in the first block at every level above.
        bool reachedByFirsts = false;
        std::vector<Cell> cells;
        std::vector<std::uint32_t> boundaries;
        // What the description says of the kind.
        std::span<std::uint32_t const> lineage;
        std::span<Description::Field const> fields;
        std::vector<Cursor*> descendants;
    };
    // The position of iterators among the blocks of one kind, with all that a step needs; the store
    // of the kind owns what it points to. Its size is a power of two, which makes indexing cheap.
    struct alignas(64) Cursor {
        // The cells of the block at the position; null at a mark.
        Cell const* cells = nullptr;
        // A block, or one of the two marks.
        std::uint32_t block = beforeFirst;
        std::uint32_t fieldCount = 0;
        // The first block, or pastLast when there is none, of a kind directly below the root; a
        // mark for any other kind.
        std::uint32_t firstInRoot = beforeFirst;
        Cell const* firstCells = nullptr;
        std::uint32_t const* boundaries = nullptr;
        // The root is its own parent.
        Cursor* parent = nullptr;
        Cursor* const* descendantsBegin = nullptr;
        Cursor* const* descendantsEnd = nullptr;

        void rewind() noexcept {
            cells = nullptr;
            block = beforeFirst;
        }
    };

    Cell const* firstCell(Index const& field) const noexcept;
    // What a field is described as; the handle must be valid.
    FieldType typeOf(Index const& field) const noexcept;
    // The number that a cell's text makes; 0 when there is no cell.
    long numberOf(Cell const* cell, Index const& field) const;
    BlockRange childrenOf(std::uint32_t parentBlock, std::uint32_t childKind) const noexcept;
    // The block of a kind at which its child kinds are walked when its cursor is at a mark;
    // pastLast when there is none.
    std::uint32_t blockAtMark(std::uint32_t kind) const noexcept;

    void followStore(std::uint32_t kind) noexcept;
    void rewindWithAncestors(BlockIndex const& block) noexcept;
    // Of a kind other than the root.
    bool advance(BlockIndex const& block) noexcept;
    Cell const* cellAtCursor(Index const& field) const noexcept;

    Description const& descriptionM;
    int recordKindM = detailRecord;
    std::vector<BlockStore> storesM;
    // By block kind, beside the stores. Walking and reading through iterators touch little else.
    std::vector<Cursor> cursorsM;
};

// Inline, for they are what every read and every step comes down to.
inline Container::BlockRange Container::childrenOf(std::uint32_t parentBlock,
                                                   std::uint32_t childKind) const noexcept {
    auto const* const boundaries = cursorsM[childKind].boundaries + parentBlock;
    return {boundaries[0], boundaries[1]};
}

inline FieldType Container::typeOf(Index const& field) const noexcept {
    return storesM[field.blockKind()].fields[field.field()].type;
}

inline void Container::rewindWithAncestors(BlockIndex const& block) noexcept {
    for (auto* each = &cursorsM[block.blockKind()]; each->parent != each; each = each->parent) {
        each->rewind();
    }
}

inline bool Container::advance(BlockIndex const& block) noexcept {
    auto& cursor = cursorsM[block.blockKind()];
    for (auto const* each = cursor.descendantsBegin; each != cursor.descendantsEnd; ++each) {
        (*each)->rewind();
    }
    auto parent = cursor.parent->block;
    if (parent == beforeFirst) {
        parent = cursor.parent->firstInRoot;
    }
    if (parent >= pastLast) {
        parent = blockAtMark(storesM[block.blockKind()].parent);
        if (parent == pastLast) {
            return false;
        }
    }
    auto const* const range = cursor.boundaries + parent;
    // What comes after the mark past the last block is beyond every range.
    auto const next = cursor.block == beforeFirst ? range[0] : cursor.block + 1;
    if (next >= range[1]) {
        cursor.cells = nullptr;
        cursor.block = pastLast;
        return false;
    }
    cursor.cells = cursor.firstCells + std::size_t{next} * cursor.fieldCount;
    cursor.block = next;
    return true;
}

inline Container::Cell const* Container::cellAtCursor(Index const& field) const noexcept {
    if (!field.isValid()) {
        return nullptr;
    }
    auto const* const cells = cursorsM[field.blockKind()].cells;
    return cells == nullptr ? nullptr : cells + field.field();
}

} // namespace EDR
