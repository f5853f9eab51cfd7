// The price model data module as its clients see it.
#pragma once

#include "PLG/StdPlugIn.h"
#include "RW/RWTValOrderedVector.h"

#include <iosfwd>

namespace DAT::Rating {

class PricePlugIn : public PLG::StdPlugIn {
public:
    using StdPlugIn::StdPlugIn;
    ~PricePlugIn() override;

    // Writes the price models that memory holds, in the order of the list. The first value is
    // written with the stream's fill and width.
    virtual void getDataDump(std::ostream& out,
                             RWTValOrderedVector<BAS::String> const& priceModelCodes) = 0;
};

} // namespace DAT::Rating
