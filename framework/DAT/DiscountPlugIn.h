// The discount data module as its clients see it. Each operation writes what memory holds for each
// element of its list, in the order of the list, and its first value with the stream's fill and
// width.
#pragma once

#include "PLG/StdPlugIn.h"
#include "RW/RWTValOrderedVector.h"

#include <iosfwd>

namespace DAT::Discount {

class PlugIn : public PLG::StdPlugIn {
public:
    using StdPlugIn::StdPlugIn;
    ~PlugIn() override;

    virtual void
    getDiscountObjectDataDump(std::ostream& out,
                              RWTValOrderedVector<unsigned long> const& discountIds) const = 0;
    virtual void getSponsorshipObjectDataDump(
        std::ostream& out, RWTValOrderedVector<unsigned long> const& sponsorshipIds) const = 0;
    virtual void getDscModelDataDump(std::ostream& out,
                                     RWTValOrderedVector<BAS::String>& modelNames) = 0;
};

} // namespace DAT::Discount
