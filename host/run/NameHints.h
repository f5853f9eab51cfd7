// Adds to statuses that name something that isn't there, or isn't what it should be, what may have
// been meant: the nearest name of the registry or of the EDR description. Any thread.
#pragma once

#include "BAS/Status.h"
#include "registry/Registry.h"

#include <functional>
#include <string>

namespace EDR {
class Description;
}

namespace host {

class NameHints {
public:
    // The EDR description of the pipeline to which an object belongs, or null.
    using DescriptionOf = std::function<EDR::Description const*(BAS::String const& object)>;

    // The registry must outlive the hints.
    NameHints(Registry const& registry, DescriptionOf descriptionOf)
        : registryM(registry), descriptionOfM(std::move(descriptionOf)) {}

    // With the hint as its last argument; unchanged when nothing is near, or when it has one.
    BAS::Status withHint(BAS::Status status) const;

private:
    std::string ofReference(BAS::Status const& status) const;
    std::string ofKind(BAS::Status const& status) const;
    std::string ofKey(BAS::Status const& status) const;
    std::string ofField(BAS::Status const& status) const;
    std::string ofBlock(BAS::Status const& status) const;

    Registry const& registryM;
    DescriptionOf descriptionOfM;
};

} // namespace host
