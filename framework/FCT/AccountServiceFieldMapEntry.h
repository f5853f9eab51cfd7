// Which EDR fields hold the customer identifiers of a service's two parties.
#pragma once

#include "BAS/String.h"
#include "EDR/Index.h"

namespace FCT::Account {

class ServiceFieldMapEntry {
public:
    explicit ServiceFieldMapEntry(BAS::String const& serviceCode) : serviceCodeM(serviceCode) {}

    // Set the field of a party; a later call replaces an earlier one. Return false, and change
    // nothing, for a field without a name or a handle that is not valid.
    bool initAField(BAS::String const& fieldName, EDR::Index const& field);
    bool initBField(BAS::String const& fieldName, EDR::Index const& field);

    BAS::String const& serviceCode() const noexcept { return serviceCodeM; }
    // Not valid while the party's field was never set.
    EDR::Index const& aField() const noexcept { return aFieldM; }
    EDR::Index const& bField() const noexcept { return bFieldM; }

private:
    BAS::String serviceCodeM;
    EDR::Index aFieldM;
    EDR::Index bFieldM;
};

} // namespace FCT::Account
