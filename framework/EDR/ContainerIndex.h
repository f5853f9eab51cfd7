// Handles for access to EDR fields and blocks without any look-up: the position of a field among
// the fields of its block kind, and the number of a block kind. EDR::Factory resolves a path to a
// handle; a handle that was never resolved is not valid and reads as absent. Values.
#pragma once

#include <cstdint>

namespace EDR {

class ContainerIndex {
public:
    bool isValid() const noexcept { return blockKindM != unresolved; }
    // The block kind, or that of the field.
    std::uint32_t blockKind() const noexcept { return blockKindM; }

    friend bool operator==(ContainerIndex const&, ContainerIndex const&) = default;

protected:
    ContainerIndex() = default;
    explicit ContainerIndex(std::uint32_t blockKind) noexcept : blockKindM(blockKind) {}

private:
    static constexpr std::uint32_t unresolved = UINT32_MAX;

    std::uint32_t blockKindM = unresolved;
};

} // namespace EDR
