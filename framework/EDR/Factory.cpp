#include "EDR/Factory.h"

#include "BAS/Status.h"
#include "EDR/Description.h"

namespace EDR {

namespace {

template <class Handle>
Handle requireFound(Handle const& handle, char const* messageName, BAS::String const& module,
                    BAS::String const& path, BAS::String const& alias,
                    BAS::String const& moduleReference) {
    if (!handle.isValid()) {
        BAS::Status status(messageName, BAS::Status::critical, path);
        for (auto const* argument : {&alias, &module, &moduleReference}) {
            status.arguments().append(*argument);
        }
        throw status;
    }
    return handle;
}

} // namespace

Index Factory::getIndex(BAS::String const& module, BAS::String const& path,
                        BAS::String const& alias, BAS::String const& moduleReference) const {
    return requireFound(descriptionM.findField(path), "ERR_EDR_FIELD_NOT_FOUND", module, path,
                        alias, moduleReference);
}

BlockIndex Factory::getBlockIndex(BAS::String const& module, BAS::String const& path,
                                  BAS::String const& alias,
                                  BAS::String const& moduleReference) const {
    return requireFound(descriptionM.findBlock(path), "ERR_EDR_BLOCK_NOT_FOUND", module, path,
                        alias, moduleReference);
}

void Factory::getBlockIndexName(BlockIndex const& block, BAS::String& name) const {
    name =
        block.isValid() ? descriptionM.blockKinds().at(block.blockKind()).path : BAS::NULL_STRING;
}

} // namespace EDR
