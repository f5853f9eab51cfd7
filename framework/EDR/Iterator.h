// Walks the repeating blocks of a container. It is bound to a block kind once and placed on one
// container at a time, which it does not own.
//
// The container keeps one cursor for each block kind, and iterators move those cursors: a field is
// read at the cursor of the field's own block kind, through whichever iterator on that container.
#pragma once

#include "BAS/String.h"
#include "EDR/BlockIndex.h"
#include "EDR/Index.h"

namespace EDR {

class Container;

class Iterator {
public:
    // Binds the iterator to a block kind. False for a handle that is not valid, and for the root,
    // which does not repeat.
    bool setIndex(BlockIndex const& block);

    // Places the iterator on a container: the cursors of its block kind and of that kind's
    // ancestors go before their first block. False when there is no container or when the iterator
    // is not bound.
    bool reset(Container* container);

    // Advances the block kind's cursor to the next block below the same parent, at first to the
    // first one in the current block of the parent kind (a parent that was never stepped counts as
    // its first block), and puts the cursors of the kinds below it before their first block. False
    // when no block is left, and without a container.
    bool operator()(BlockIndex const& block);

    // Read a field at the cursor of the field's own block kind; empty text or 0 when that cursor
    // isn't at a block. The text is valid until the container is filled again.
    BAS::String const& getString(Index const& field) const;
    long getLong(Index const& field) const;

private:
    BlockIndex blockM;
    Container* containerM = nullptr;
};

} // namespace EDR
