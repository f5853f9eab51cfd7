#include "EDR/Iterator.h"

#include "EDR/Container.h"
#include "EDR/Description.h"

namespace EDR {

bool Iterator::setIndex(BlockIndex const& block) {
    if (!block.isValid() || block == Description::root()) {
        return false;
    }
    blockM = block;
    return true;
}

bool Iterator::reset(Container* container) {
    containerM = container;
    if (container == nullptr || !blockM.isValid()) {
        return false;
    }
    container->rewindWithAncestors(blockM);
    return true;
}

bool Iterator::operator()(BlockIndex const& block) {
    return containerM != nullptr && block.isValid() && block != Description::root() &&
           containerM->advance(block);
}

BAS::String const& Iterator::getString(Index const& field) const {
    auto const* const cell = containerM == nullptr ? nullptr : containerM->cellAtCursor(field);
    return cell == nullptr ? BAS::NULL_STRING : cell->text;
}

long Iterator::getLong(Index const& field) const {
    return containerM == nullptr ? 0 : containerM->numberOf(containerM->cellAtCursor(field), field);
}

} // namespace EDR
