// Resolves the paths of EDR fields and blocks to handles, for one pipeline. Alias and module
// reference are only used in messages. It is built on a description, which it does not own, and is
// only read afterwards, from any thread.
#pragma once

#include "BAS/String.h"
#include "EDR/BlockIndex.h"
#include "EDR/Index.h"

namespace EDR {

class Description;

class Factory {
public:
    explicit Factory(Description const& description) noexcept : descriptionM(description) {}

    // Throw a BAS::Status when the description has no such field ("ERR_EDR_FIELD_NOT_FOUND") or no
    // such block ("ERR_EDR_BLOCK_NOT_FOUND"); its arguments are path, alias, module and module
    // reference, and its object name is empty.
    Index getIndex(BAS::String const& module, BAS::String const& path, BAS::String const& alias,
                   BAS::String const& moduleReference) const;
    BlockIndex getBlockIndex(BAS::String const& module, BAS::String const& path,
                             BAS::String const& alias, BAS::String const& moduleReference) const;

    // Writes the block's full path into name; empty for a handle that is not valid.
    void getBlockIndexName(BlockIndex const& block, BAS::String& name) const;

private:
    Description const& descriptionM;
};

} // namespace EDR
