// The price models in memory, by code. Loaded once, then only read; safe to read on any thread.
#pragma once

#include "TableLoader.h"

#include "BAS/String.h"

#include <iosfwd>

namespace MOD {

class DumpText;

struct PriceModel {
    Text code;
    std::optional<Text> description;
    Text currency;
};

struct PriceStep {
    Text code;
    std::uint64_t number = 0;
    Text unit;
    Decimal thresholdFrom;
    std::optional<Decimal> thresholdTo;
    Decimal amount;
    Decimal perQuantity;
    UtcTime validFrom;
    EndTime validTo;
};

// What a step does to a balance.
struct PriceImpact {
    Text code;
    std::uint64_t stepNumber = 0;
    std::uint64_t number = 0;
    Text resource;
    Text unit;
    Decimal amount;
};

class PriceData {
public:
    // Returns what each table gave. Throws std::runtime_error for a table that can't be read, and
    // when a stop is requested. Once for each object.
    std::vector<DAT::LoadedTable> load(RWDBConnection const& connection, RowReport const& report,
                                       std::stop_token stop = {});

    void dump(std::ostream& out, RWTValOrderedVector<BAS::String> const& codes) const;

private:
    void dumpModel(DumpText& text, std::string_view code) const;
    PriceModel const* model(std::string_view code) const;
    PriceStep const* stepOf(PriceImpact const& impact) const;

    TextPool textsM;
    std::vector<PriceModel> modelsM;
    std::vector<PriceStep> stepsM;
    std::vector<PriceImpact> impactsM;
};

} // namespace MOD
