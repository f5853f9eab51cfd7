#include "EDR/Container.h"

#include "RW/RWNumberText.h"

#include <algorithm>
#include <stdexcept>

namespace EDR {

namespace {

long numberFrom(std::string_view text) noexcept {
    long number = 0;
    rwTextToNumber(text, number);
    return number;
}

} // namespace

Container::Container(Description const& description)
    : kindsM(description.blockKinds().data()), cursorsM(description.blockKinds().size()),
      lastBlocksM(description.blockKinds().size()) {
    clear(detailRecord);
}

BAS::String const& Container::getString(Index const& field) const {
    auto const* const cell = firstCell(field);
    return cell != nullptr ? cell->text : BAS::NULL_STRING;
}

long Container::getLong(Index const& field) const {
    return numberOf(firstCell(field), field);
}

BAS::DateTime Container::getDateTime(Index const& field) const {
    auto const* const cell = firstCell(field);
    if (cell == nullptr) {
        return BAS::DateTime();
    }
    return typeOf(field) == FieldType::dateTime
               ? BAS::DateTime(static_cast<unsigned long>(cell->number))
               : BAS::DateTime::fromText(cell->text.view());
}

BAS::String const& Container::getString(Index const& field,
                                        RWTValOrderedVector<long> const& positions) const {
    if (!field.isValid()) {
        return BAS::NULL_STRING;
    }
    auto const* block = blocksM.data();
    std::size_t level = 0;
    for (auto const& place : kindOf(field).lineage) {
        auto number = firstChild(block->links, place);
        // A negative position is a large one here.
        auto position =
            level < positions.entries() ? static_cast<std::size_t>(positions[level]) : 0;
        for (; position != 0 && number != none; --position) {
            number = blocksM[number].links.next;
        }
        if (number == none) {
            return BAS::NULL_STRING;
        }
        block = &blocksM[number];
        ++level;
    }
    return cellsM[block->firstCell + field.field()].text;
}

void Container::clear(RecordKind kind) {
    recordKindM = kind;
    cellCountM = 0;
    blocksM.clear();
    firstChildrenM.assign(1, none);
    std::fill(lastBlocksM.begin(), lastBlocksM.end(), LastBlock{none, 0});
    std::fill(cursorsM.begin(), cursorsM.end(), Cursor());
    auto const root = append(kindsM[0]);
    cursorsM[0] = {cellsOf(root), blocksM[root].links};
}

void Container::addBlock(BlockIndex const& block) {
    auto const& kind = kindOf(block);
    auto const parent = lastBlocksM[kind.place.parent].number;
    if (parent == none) {
        throw std::logic_error("EDR block '" + kind.path.str() + "' added without its parent");
    }
    auto const last = lastBlocksM[block.blockKind()].number;
    auto const added = append(kind);
    auto& first = firstChildrenM[blocksM[parent].links.firstChildren + kind.place.position];
    if (first == none) {
        first = added;
    } else {
        blocksM[last].links.next = added;
        // The cursor may be at that block, the last below the parent until now.
        auto& atCursor = cursorsM[block.blockKind()].links;
        if (atCursor.next == none && atCursor.firstChildren == blocksM[last].links.firstChildren) {
            atCursor.next = added;
        }
    }
}

// Adds an empty block, the last of its kind now, to which nothing is linked yet.
std::uint32_t Container::append(Description::BlockKind const& kind) {
    auto const firstCell = cellCountM;
    cellCountM += static_cast<std::uint32_t>(kind.fields.size());
    if (cellsM.size() < cellCountM) {
        growCells();
    }
    std::for_each(cellsM.data() + firstCell, cellsM.data() + cellCountM, [](Cell& cell) {
        cell.text.clear();
        cell.number = 0;
    });
    auto const number = static_cast<std::uint32_t>(blocksM.size());
    lastBlocksM[kind.place.kind] = {number, firstCell};
    blocksM.push_back({firstCell, {none, static_cast<std::uint32_t>(firstChildrenM.size())}});
    firstChildrenM.insert(firstChildrenM.end(), kind.children.size(), none);
    return number;
}

void Container::growCells() {
    std::vector<Cell> grown(std::max<std::size_t>(cellCountM, 2 * cellsM.size()));
    std::move(cellsM.begin(), cellsM.end(), grown.begin());
    for (auto& cursor : cursorsM) {
        if (cursor.cells != nullptr) {
            cursor.cells = grown.data() + (cursor.cells - cellsM.data());
        }
    }
    cellsM.swap(grown);
}

void Container::failWithoutBlock(Index const& field) const {
    throw std::logic_error("field of EDR block '" + kindOf(field).path.str() +
                           "' set without its block");
}

long Container::valueOf(FieldType type, std::string_view text) noexcept {
    return type == FieldType::number ? numberFrom(text)
                                     : static_cast<long>(BAS::DateTime::fromText(text).seconds());
}

Container::Cell const* Container::firstCell(Index const& field) const noexcept {
    if (field.blockKind() == Description::root().blockKind()) {
        return &cellsM[field.field()];
    }
    if (!field.isValid()) {
        return nullptr;
    }
    std::uint32_t block = 0;
    for (auto const& place : kindOf(field).lineage) {
        block = firstChild(blocksM[block].links, place);
        if (block == none) {
            return nullptr;
        }
    }
    return cellsOf(block) + field.field();
}

long Container::numberOf(Cell const* cell, Index const& field) const {
    if (cell == nullptr) {
        return 0;
    }
    return typeOf(field) == FieldType::number ? cell->number : numberFrom(cell->text.view());
}

Container::Links const* Container::currentBlock(std::uint32_t kind) const noexcept {
    auto const* block = &blocksM.front().links;
    for (auto const& place : kindsM[kind].lineage) {
        auto const& cursor = cursorsM[place.kind];
        if (cursor.isAtBlock()) {
            block = &cursor.links;
        } else if (block != nullptr) {
            auto const first = cursor.links.next == theFirst ? firstChild(*block, place) : none;
            block = first != none ? &blocksM[first].links : nullptr;
        }
    }
    return block;
}

bool Container::advanceBelowUnstepped(Description::Place const& place) noexcept {
    auto const* const parent = currentBlock(place.parent);
    return parent != nullptr && moveTo(firstChild(*parent, place), cursorsM[place.kind]);
}

} // namespace EDR
