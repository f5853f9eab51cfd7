// A data module that holds the price models of a CSV file, and reads them again when it is asked to
// by the command Reload.
//
// Registry: File, the path of the CSV file; relative paths begin at the registry file. Each line
// has code;amount;quantity;unit, and a code may have several lines.
#pragma once

#include "DAT/RatingPricePlugIn.h"
#include "DAT/ReloadablePlugIn.h"

#include <map>
#include <string>
#include <vector>

namespace Example {

using PriceLines = std::map<BAS::String, std::vector<std::string>>;

class CsvPrices : public DAT::ReloadablePlugIn<DAT::Rating::PricePlugIn, PriceLines> {
public:
    explicit CsvPrices(BAS::String const& name);

    void getDataDump(std::ostream& out,
                     RWTValOrderedVector<BAS::String> const& priceModelCodes) override;

private:
    void load(DAT::LoadSession& session, PriceLines& data, DAT::LoadReport& report) const override;
    std::string fileName() const;
};

} // namespace Example
