// The balance data module as its clients see it.
#pragma once

#include "PLG/StdPlugIn.h"
#include "RW/RWTValOrderedVector.h"

#include <iosfwd>

namespace DAT::Balance {

class PlugIn : public PLG::StdPlugIn {
public:
    using StdPlugIn::StdPlugIn;
    ~PlugIn() override;

    // Writes the balances that memory holds for each balance group, in the order of the list. The
    // first value is written with the stream's fill and width.
    virtual void getDataDump(std::ostream& out,
                             RWTValOrderedVector<unsigned long> const& balanceGroupIds) const = 0;
};

} // namespace DAT::Balance
