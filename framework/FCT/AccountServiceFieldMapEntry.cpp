#include "FCT/AccountServiceFieldMapEntry.h"

namespace FCT::Account {

namespace {

bool setField(EDR::Index& target, BAS::String const& fieldName, EDR::Index const& field) {
    if (fieldName.isNull() || !field.isValid()) {
        return false;
    }
    target = field;
    return true;
}

} // namespace

bool ServiceFieldMapEntry::initAField(BAS::String const& fieldName, EDR::Index const& field) {
    return setField(aFieldM, fieldName, field);
}

bool ServiceFieldMapEntry::initBField(BAS::String const& fieldName, EDR::Index const& field) {
    return setField(bFieldM, fieldName, field);
}

} // namespace FCT::Account
