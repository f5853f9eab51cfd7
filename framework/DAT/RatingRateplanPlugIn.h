// The rate plan data module as its clients see it.
#pragma once

#include "PLG/StdPlugIn.h"

#include <iosfwd>

namespace DAT::Rating {

class RateplanPlugIn : public PLG::StdPlugIn {
public:
    using StdPlugIn::StdPlugIn;
    ~RateplanPlugIn() override;

    // Writes the version of a rate plan that memory holds, with the entries that apply to the
    // service code, service class and impact category. The first value is written with the stream's
    // fill and width.
    virtual void getDataDump(std::ostream& out, BAS::String const& ratePlanCode,
                             long const& version, BAS::String const& serviceCode,
                             BAS::String const& serviceClass,
                             BAS::String const& impactCategory) const = 0;
};

} // namespace DAT::Rating
