#include "EDR/Factory.h"

#include "BAS/Status.h"
#include "EDR/Description.h"

#include <algorithm>

namespace EDR {

namespace {

// Of a block that isn't there: the root can't be iterated.
constexpr std::uint32_t anyBlockKind = 1;

BAS::Status notFound(char const* messageName, BAS::String const& module, BAS::String const& path,
                     BAS::String const& alias, BAS::String const& moduleReference) {
    BAS::Status status(messageName, BAS::Status::critical, path);
    for (auto const* argument : {&alias, &module, &moduleReference}) {
        status.arguments().append(*argument);
    }
    return status;
}

} // namespace

Index Factory::getIndex(BAS::String const& module, BAS::String const& path,
                        BAS::String const& alias, BAS::String const& moduleReference) const {
    auto const field = descriptionM.findField(path);
    if (!field.isValid()) {
        report(notFound("ERR_EDR_FIELD_NOT_FOUND", module, path, alias, moduleReference));
        return Index(Description::root().blockKind(), 0);
    }
    return field;
}

BlockIndex Factory::getBlockIndex(BAS::String const& module, BAS::String const& path,
                                  BAS::String const& alias,
                                  BAS::String const& moduleReference) const {
    auto const block = descriptionM.findBlock(path);
    if (!block.isValid()) {
        report(notFound("ERR_EDR_BLOCK_NOT_FOUND", module, path, alias, moduleReference));
        return BlockIndex(anyBlockKind);
    }
    return block;
}

void Factory::report(BAS::Status const& missing) const {
    if (missingM == nullptr) {
        throw missing;
    }
    auto const isSame = [&](BAS::Status const& known) {
        return known.messageName() == missing.messageName() &&
               known.arguments()[0] == missing.arguments()[0];
    };
    if (std::none_of(missingM->begin(), missingM->end(), isSame)) {
        missingM->push_back(missing);
    }
}

void Factory::getBlockIndexName(BlockIndex const& block, BAS::String& name) const {
    name =
        block.isValid() ? descriptionM.blockKinds().at(block.blockKind()).path : BAS::NULL_STRING;
}

} // namespace EDR
