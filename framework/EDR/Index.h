// The handle of a field: its block kind and its position among that kind's fields.
#pragma once

#include "EDR/ContainerIndex.h"

namespace EDR {

class Index : public ContainerIndex {
public:
    Index() = default;
    Index(std::uint32_t blockKind, std::uint32_t field) noexcept
        : ContainerIndex(blockKind), fieldM(field) {}

    std::uint32_t field() const noexcept { return fieldM; }

    friend bool operator==(Index const&, Index const&) = default;

private:
    std::uint32_t fieldM = 0;
};

} // namespace EDR
