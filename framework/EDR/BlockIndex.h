// The handle of a block kind.
#pragma once

#include "EDR/ContainerIndex.h"

namespace EDR {

class BlockIndex : public ContainerIndex {
public:
    BlockIndex() = default;
    explicit BlockIndex(std::uint32_t blockKind) noexcept : ContainerIndex(blockKind) {}
};

} // namespace EDR
