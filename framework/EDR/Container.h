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
#include "EDR/Index.h"
#include "RW/RWTValOrderedVector.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace EDR {

class Description;

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
    struct BlockRange {
        std::uint32_t begin;
        std::uint32_t end;
    };
    // All blocks of one kind. The blocks below block p of the parent kind begin at firstOf[p] and
    // end where those of the next parent begin.
    struct BlockStore {
        std::uint32_t parent = 0;
        std::uint32_t fieldCount = 0;
        std::uint32_t count = 0;
        // Whether the first block lies in the first block at every level above.
        bool reachedByFirsts = false;
        std::vector<Cell> cells;
        std::vector<std::uint32_t> firstOf;
        // The position of iterators: a block, or one of the two marks below.
        std::uint32_t cursor = beforeFirst;
    };

    static constexpr std::uint32_t beforeFirst = UINT32_MAX;
    static constexpr std::uint32_t pastLast = UINT32_MAX - 1;

    // The cell at a block of the field's kind; the block may be a cursor mark. Null when there is
    // no such cell.
    Cell const* cellAt(Index const& field, std::uint32_t block) const noexcept;
    Cell const* firstCell(Index const& field) const noexcept;
    long numberOf(Cell const* cell, Index const& field) const;
    BlockRange childrenOf(std::uint32_t parentBlock, std::uint32_t childKind) const noexcept;
    // The block of a kind whose child blocks are walked; pastLast when there is none.
    std::uint32_t currentBlock(std::uint32_t kind) const noexcept;
    std::uint32_t firstBlockOf(std::uint32_t neverSteppedKind) const noexcept;

    void rewindWithAncestors(BlockIndex const& block) noexcept;
    bool advance(BlockIndex const& block) noexcept;
    Cell const* cellAtCursor(Index const& field) const noexcept;

    Description const& descriptionM;
    int recordKindM = detailRecord;
    std::vector<BlockStore> storesM;
};

// Inline, because every read of a field calls them.
inline Container::Cell const* Container::cellAt(Index const& field,
                                                std::uint32_t block) const noexcept {
    auto const& store = storesM[field.blockKind()];
    return block < store.count ? &store.cells[std::size_t{block} * store.fieldCount + field.field()]
                               : nullptr;
}

inline std::uint32_t Container::currentBlock(std::uint32_t kind) const noexcept {
    auto const cursor = storesM[kind].cursor;
    return cursor != beforeFirst ? cursor : firstBlockOf(kind);
}

inline Container::Cell const* Container::cellAtCursor(Index const& field) const noexcept {
    return field.isValid() ? cellAt(field, storesM[field.blockKind()].cursor) : nullptr;
}

} // namespace EDR
