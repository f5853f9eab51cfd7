#include "BAS/RegistryEntry.h"

#include <algorithm>
#include <utility>

namespace BAS {

RegistryEntry::RegistryEntry(String name, String value)
    : nameM(std::move(name)), valueM(std::move(value)) {
}

RegistryEntry& RegistryEntry::add(String name, String value) {
    childrenM.push_back(std::make_unique<RegistryEntry>(std::move(name), std::move(value)));
    return *childrenM.back();
}

RegistryEntry const* RegistryEntry::find(String const& name) const {
    auto const found = std::find_if(childrenM.begin(), childrenM.end(),
                                    [&](auto const& child) { return child->nameM == name; });
    return found == childrenM.end() ? nullptr : found->get();
}

} // namespace BAS
