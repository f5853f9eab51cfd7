#include "BAS/RegistryEntry.h"

#include <algorithm>
#include <atomic>
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
    if (found == childrenM.end()) {
        return nullptr;
    }
    std::atomic_ref((*found)->wasFoundM).store(true, std::memory_order_relaxed);
    return found->get();
}

bool RegistryEntry::wasFound() const {
    return std::atomic_ref(wasFoundM).load(std::memory_order_relaxed);
}

} // namespace BAS
