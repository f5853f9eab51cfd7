#include "EDR/Container.h"

#include "EDR/Description.h"

#include <stdexcept>

namespace EDR {

namespace {

long numberFrom(BAS::String const& text) {
    long number = 0;
    text.toNum(number);
    return number;
}

} // namespace

Container::Container(Description const& description) : descriptionM(description) {
    auto const& kinds = description.blockKinds();
    storesM.resize(kinds.size());
    cursorsM.resize(kinds.size());
    for (std::size_t kind = 0; kind < kinds.size(); ++kind) {
        auto& store = storesM[kind];
        store.parent = kinds[kind].parent;
        store.fieldCount = static_cast<std::uint32_t>(kinds[kind].fields.size());
        store.boundaries.push_back(0);
        store.lineage = kinds[kind].lineage;
        store.fields = kinds[kind].fields;
        for (auto const descendant : kinds[kind].descendants) {
            store.descendants.push_back(&cursorsM[descendant]);
        }
        auto& cursor = cursorsM[kind];
        cursor.fieldCount = store.fieldCount;
        cursor.parent = &cursorsM[store.parent];
        cursor.descendantsBegin = store.descendants.data();
        cursor.descendantsEnd = cursor.descendantsBegin + store.descendants.size();
        followStore(static_cast<std::uint32_t>(kind));
    }
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
    std::uint32_t block = 0;
    std::size_t level = 0;
    for (auto const kind : storesM[field.blockKind()].lineage) {
        auto const range = childrenOf(block, kind);
        auto const position = level < positions.entries() ? positions[level] : 0;
        // A negative position is a large one here.
        if (static_cast<unsigned long>(position) >= range.end - range.begin) {
            return BAS::NULL_STRING;
        }
        block = range.begin + static_cast<std::uint32_t>(position);
        ++level;
    }
    auto const& cursor = cursorsM[field.blockKind()];
    return cursor.firstCells[std::size_t{block} * cursor.fieldCount + field.field()].text;
}

void Container::clear(RecordKind kind) {
    recordKindM = kind;
    for (auto& store : storesM) {
        store.count = 0;
        store.reachedByFirsts = false;
        store.boundaries.resize(1);
    }
    for (auto& cursor : cursorsM) {
        cursor.rewind();
        cursor.firstInRoot = cursor.parent == cursorsM.data() ? pastLast : beforeFirst;
    }
    addBlock(Description::root());
    cursorsM.front().block = 0;
    followStore(0);
}

void Container::addBlock(BlockIndex const& block) {
    auto& store = storesM[block.blockKind()];
    auto const& kind = descriptionM.blockKinds()[block.blockKind()];
    auto const& parent = storesM[store.parent];
    bool const isRoot = block == Description::root();
    if (!isRoot && parent.count == 0) {
        throw std::logic_error("EDR block '" + kind.path.str() + "' added without its parent");
    }
    if (store.count == 0) {
        store.reachedByFirsts = isRoot || (parent.count == 1 && parent.reachedByFirsts);
        if (store.parent == Description::root().blockKind()) {
            cursorsM[block.blockKind()].firstInRoot = 0;
        }
    }
    auto const firstCell = std::size_t{store.count} * store.fieldCount;
    if (store.cells.size() < firstCell + store.fieldCount) {
        store.cells.resize(firstCell + store.fieldCount);
        followStore(block.blockKind());
    }
    for (std::size_t i = firstCell; i < firstCell + store.fieldCount; ++i) {
        store.cells[i].text.clear();
        store.cells[i].number = 0;
    }
    for (auto const child : kind.children) {
        storesM[child].boundaries.push_back(storesM[child].count);
        cursorsM[child].boundaries = storesM[child].boundaries.data();
    }
    if (!isRoot) {
        ++store.boundaries.back();
    }
    ++store.count;
}

void Container::setField(Index const& field, std::string_view text) {
    auto& store = storesM[field.blockKind()];
    if (store.count == 0) {
        throw std::logic_error("EDR field set without its block");
    }
    auto& cell = store.cells[std::size_t{store.count - 1} * store.fieldCount + field.field()];
    cell.text.assign(text);
    switch (typeOf(field)) {
    case FieldType::text:
        break;
    case FieldType::number:
        cell.number = numberFrom(cell.text);
        break;
    case FieldType::dateTime:
        cell.number = static_cast<long>(BAS::DateTime::fromText(text).seconds());
        break;
    }
}

// Points a kind's cursor to where the store has its blocks now.
void Container::followStore(std::uint32_t kind) noexcept {
    auto const& store = storesM[kind];
    auto& cursor = cursorsM[kind];
    cursor.boundaries = store.boundaries.data();
    cursor.firstCells = store.cells.data();
    if (cursor.block < pastLast) {
        cursor.cells = cursor.firstCells + std::size_t{cursor.block} * store.fieldCount;
    }
}

Container::Cell const* Container::firstCell(Index const& field) const noexcept {
    if (!field.isValid()) {
        return nullptr;
    }
    auto const& store = storesM[field.blockKind()];
    return store.reachedByFirsts ? &store.cells[field.field()] : nullptr;
}

long Container::numberOf(Cell const* cell, Index const& field) const {
    if (cell == nullptr) {
        return 0;
    }
    return typeOf(field) == FieldType::number ? cell->number : numberFrom(cell->text);
}

std::uint32_t Container::blockAtMark(std::uint32_t kind) const noexcept {
    // What was never stepped counts as the first block within the current one of its parent kind.
    std::uint32_t block = 0;
    for (auto const level : storesM[kind].lineage) {
        auto const cursor = cursorsM[level].block;
        if (cursor != beforeFirst) {
            block = cursor;
        } else if (block != pastLast) {
            auto const range = childrenOf(block, level);
            block = range.begin != range.end ? range.begin : pastLast;
        }
    }
    return block;
}

} // namespace EDR
