// Resolves the paths of EDR fields and blocks to handles, for one pipeline. Alias and module
// reference are only used in messages. It is built on a description, which it does not own, and is
// only read afterwards, from any thread.
//
// To find everything that a plug-in misses, a factory collects what isn't there and goes on. The
// handles that it then gives for it lead nowhere: the plug-in must not get any EDR.
#pragma once

#include "BAS/Status.h"
#include "BAS/String.h"
#include "EDR/BlockIndex.h"
#include "EDR/Index.h"

#include <vector>

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

    // From now on, what would be thrown is appended there instead, each path once, and a handle is
    // returned that passes for a valid one; null: no more. Only while nothing else uses the
    // factory.
    void collectMissing(std::vector<BAS::Status>* missing) noexcept { missingM = missing; }

private:
    void report(BAS::Status const& missing) const;

    Description const& descriptionM;
    std::vector<BAS::Status>* missingM = nullptr; // not owned
};

} // namespace EDR
