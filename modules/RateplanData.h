// The rate plans in memory, by code and version. Loaded once, then only read; safe to read on any
// thread.
#pragma once

#include "TableLoader.h"

#include <iosfwd>

namespace MOD {

class DumpText;

// One version of a rate plan.
struct Rateplan {
    Text code;
    std::int64_t version = 0;
    std::uint64_t id = 0;
    Text model;
    UtcTime validFrom;
    EndTime validTo;
};

struct RateplanEntry {
    Text code;
    std::int64_t version = 0;
    std::uint64_t number = 0;
    Text serviceCode;
    Text serviceClass;
    Text impactCategory;
    Text priceModel;
};

class RateplanData {
public:
    // The rate plan of an event.
    struct Asked {
        std::string_view code;
        long version;
        std::string_view serviceCode;
        std::string_view serviceClass;
        std::string_view impactCategory;
    };

    // Returns what each table gave. Throws std::runtime_error for a table that can't be read, and
    // when a stop is requested. Once for each object.
    std::vector<DAT::LoadedTable> load(RWDBConnection const& connection, RowReport const& report,
                                       std::stop_token stop = {});

    void dump(std::ostream& out, Asked const& asked) const;

private:
    void dumpVersion(DumpText& text, Rateplan const& rateplan, Asked const& asked) const;
    void dumpAbsence(DumpText& text, Asked const& asked) const;
    bool matches(RateplanEntry const& entry, Asked const& asked) const;
    Rateplan const* rateplan(std::string_view code, std::int64_t version) const;

    TextPool textsM;
    std::vector<Rateplan> rateplansM;
    std::vector<RateplanEntry> entriesM;
};

} // namespace MOD
