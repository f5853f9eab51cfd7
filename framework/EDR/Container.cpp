#include "EDR/Container.h"

#include "EDR/Description.h"

#include <stdexcept>

namespace EDR {

namespace {

FieldType typeOf(Description const& description, Index const& field) {
    return description.blockKinds()[field.blockKind()].fields[field.field()].type;
}

long numberFrom(BAS::String const& text) {
    long number = 0;
    text.toNum(number);
    return number;
}

} // namespace

Container::Container(Description const& description) : descriptionM(description) {
    storesM.resize(description.blockKinds().size());
    for (std::size_t kind = 0; kind < storesM.size(); ++kind) {
        storesM[kind].parent = description.blockKinds()[kind].parent;
        storesM[kind].fieldCount =
            static_cast<std::uint32_t>(description.blockKinds()[kind].fields.size());
    }
    clear(detailRecord);
}

BAS::String const& Container::getString(Index const& field) const {
    auto const* const cell = firstCell(field);
    return cell == nullptr ? BAS::NULL_STRING : cell->text;
}

long Container::getLong(Index const& field) const {
    return numberOf(firstCell(field), field);
}

BAS::DateTime Container::getDateTime(Index const& field) const {
    auto const* const cell = firstCell(field);
    if (cell == nullptr) {
        return BAS::DateTime();
    }
    return typeOf(descriptionM, field) == FieldType::dateTime
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
    for (auto const kind : descriptionM.blockKinds()[field.blockKind()].lineage) {
        auto const range = childrenOf(block, kind);
        auto const position = level < positions.entries() ? positions[level] : 0;
        if (position < 0 || position >= static_cast<long>(range.end - range.begin)) {
            return BAS::NULL_STRING;
        }
        block = range.begin + static_cast<std::uint32_t>(position);
        ++level;
    }
    return cellAt(field, block)->text;
}

void Container::clear(RecordKind kind) {
    recordKindM = kind;
    for (auto& store : storesM) {
        store.count = 0;
        store.reachedByFirsts = false;
        store.firstOf.clear();
        store.cursor = beforeFirst;
    }
    addBlock(Description::root());
    storesM.front().cursor = 0;
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
    }
    auto const firstCell = std::size_t{store.count} * store.fieldCount;
    if (store.cells.size() < firstCell + store.fieldCount) {
        store.cells.resize(firstCell + store.fieldCount);
    }
    for (std::size_t i = firstCell; i < firstCell + store.fieldCount; ++i) {
        store.cells[i].text.clear();
        store.cells[i].number = 0;
    }
    for (auto const child : kind.children) {
        storesM[child].firstOf.push_back(storesM[child].count);
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
    switch (typeOf(descriptionM, field)) {
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

Container::Cell const* Container::firstCell(Index const& field) const noexcept {
    return field.isValid() && storesM[field.blockKind()].reachedByFirsts ? cellAt(field, 0)
                                                                         : nullptr;
}

long Container::numberOf(Cell const* cell, Index const& field) const {
    if (cell == nullptr) {
        return 0;
    }
    return typeOf(descriptionM, field) == FieldType::number ? cell->number : numberFrom(cell->text);
}

Container::BlockRange Container::childrenOf(std::uint32_t parentBlock,
                                            std::uint32_t childKind) const noexcept {
    auto const& children = storesM[childKind];
    auto const next = std::size_t{parentBlock} + 1;
    return {children.firstOf[parentBlock],
            next < children.firstOf.size() ? children.firstOf[next] : children.count};
}

// The first block within the current block of its own parent.
std::uint32_t Container::firstBlockOf(std::uint32_t neverSteppedKind) const noexcept {
    auto const parent = currentBlock(storesM[neverSteppedKind].parent);
    if (parent == pastLast) {
        return pastLast;
    }
    auto const range = childrenOf(parent, neverSteppedKind);
    return range.begin != range.end ? range.begin : pastLast;
}

void Container::rewindWithAncestors(BlockIndex const& block) noexcept {
    for (auto const kind : descriptionM.blockKinds()[block.blockKind()].lineage) {
        storesM[kind].cursor = beforeFirst;
    }
}

bool Container::advance(BlockIndex const& block) noexcept {
    for (auto const descendant : descriptionM.blockKinds()[block.blockKind()].descendants) {
        storesM[descendant].cursor = beforeFirst;
    }
    auto& store = storesM[block.blockKind()];
    if (block == Description::root() || store.cursor == pastLast) {
        return false;
    }
    auto const parent = currentBlock(store.parent);
    if (parent == pastLast) {
        return false;
    }
    auto const range = childrenOf(parent, block.blockKind());
    auto const next = store.cursor == beforeFirst ? range.begin : store.cursor + 1;
    store.cursor = next < range.end ? next : pastLast;
    return next < range.end;
}

} // namespace EDR
