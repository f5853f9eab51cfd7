#include "BAS/RegistryEntry.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <utility>

namespace BAS {

namespace {

constexpr std::size_t mostNamesMissed = 100;
// One for all, so that entries can be moved: names are missed at starts and in commands only.
std::mutex namesMissedLock;

} // namespace

RegistryEntry::RegistryEntry(String name, String value)
    : nameM(std::move(name)), valueM(std::move(value)) {
}

RegistryEntry& RegistryEntry::add(String name, String value) {
    {
        std::lock_guard const guard(namesMissedLock);
        std::erase(namesMissedM, name); // by whoever looked whether it is there
    }
    childrenM.push_back(std::make_unique<RegistryEntry>(std::move(name), std::move(value)));
    return *childrenM.back();
}

RegistryEntry const* RegistryEntry::find(String const& name) const {
    auto const found = std::find_if(childrenM.begin(), childrenM.end(),
                                    [&](auto const& child) { return child->nameM == name; });
    if (found == childrenM.end()) {
        std::lock_guard const guard(namesMissedLock);
        if (namesMissedM.size() < mostNamesMissed &&
            std::find(namesMissedM.begin(), namesMissedM.end(), name) == namesMissedM.end()) {
            namesMissedM.push_back(name);
        }
        return nullptr;
    }
    std::atomic_ref((*found)->wasFoundM).store(true, std::memory_order_relaxed);
    return found->get();
}

bool RegistryEntry::wasFound() const {
    return std::atomic_ref(wasFoundM).load(std::memory_order_relaxed);
}

std::vector<String> RegistryEntry::namesMissed() const {
    std::lock_guard const guard(namesMissedLock);
    return namesMissedM;
}

} // namespace BAS
