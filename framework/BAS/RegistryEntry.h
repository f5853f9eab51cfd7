// One key of the registry with its text value and the keys below it. An entry owns the entries
// below it. The tree is built before the objects that read it and does not change while they live.
#pragma once

#include "BAS/String.h"

#include <memory>
#include <vector>

namespace BAS {

class RegistryEntry {
public:
    explicit RegistryEntry(String name, String value = {});

    // Appends a key and returns it, to be filled further. The name must not be there yet.
    RegistryEntry& add(String name, String value = {});

    // The key of that name directly below this one, or null.
    RegistryEntry const* find(String const& name) const;
    // Whether find ever returned this key. Any thread.
    bool wasFound() const;
    // The names that find was asked for and that aren't here, at most a hundred, in the order in
    // which they were first asked for. Any thread.
    std::vector<String> namesMissed() const;

    String const& name() const noexcept { return nameM; }
    String const& value() const noexcept { return valueM; }
    std::vector<std::unique_ptr<RegistryEntry>> const& children() const noexcept {
        return childrenM;
    }

private:
    String nameM;
    String valueM;
    mutable bool wasFoundM = false;           // accessed atomically
    mutable std::vector<String> namesMissedM; // guarded by a lock that all entries share
    std::vector<std::unique_ptr<RegistryEntry>> childrenM;
};

} // namespace BAS
