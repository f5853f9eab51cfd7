#include "EDR/Factory.h"

#include "BAS/Status.h"
#include "EDR/Description.h"

namespace EDR {

namespace {

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
        throw notFound("ERR_EDR_FIELD_NOT_FOUND", module, path, alias, moduleReference);
    }
    return field;
}

BlockIndex Factory::getBlockIndex(BAS::String const& module, BAS::String const& path,
                                  BAS::String const& alias,
                                  BAS::String const& moduleReference) const {
    auto const block = descriptionM.findBlock(path);
    if (!block.isValid()) {
        throw notFound("ERR_EDR_BLOCK_NOT_FOUND", module, path, alias, moduleReference);
    }
    return block;
}

void Factory::getBlockIndexName(BlockIndex const& block, BAS::String& name) const {
    name =
        block.isValid() ? descriptionM.blockKinds().at(block.blockKind()).path : BAS::NULL_STRING;
}

} // namespace EDR
