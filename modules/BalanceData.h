// The balances in memory, by balance group. Loaded once, then only read; safe to read on any
// thread.
#pragma once

#include "TableLoader.h"

#include "RW/RWTValOrderedVector.h"

#include <iosfwd>

namespace MOD {

class DumpText;

struct BalanceGroup {
    std::uint64_t id = 0;
    std::uint64_t accountId = 0;
};

struct Balance {
    std::uint64_t groupId = 0;
    Text resource;
    Text unit;
    Decimal amount;
    std::optional<Decimal> creditLimit;
    UtcTime validFrom;
    EndTime validTo;
};

// A part of the balance of the same group and resource.
struct SubBalance {
    std::uint64_t groupId = 0;
    Text resource;
    std::uint64_t number = 0;
    Decimal amount;
    UtcTime validFrom;
    EndTime validTo;
};

class BalanceData {
public:
    // Returns what each table gave. Throws std::runtime_error for a table that can't be read, and
    // when a stop is requested. Once for each object.
    std::vector<DAT::LoadedTable> load(RWDBConnection const& connection, RowReport const& report,
                                       std::stop_token stop = {});

    void dump(std::ostream& out, RWTValOrderedVector<unsigned long> const& groupIds) const;

private:
    void dumpGroup(DumpText& text, std::uint64_t groupId) const;
    BalanceGroup const* group(std::uint64_t groupId) const;
    Balance const* balanceOf(SubBalance const& part) const;

    TextPool textsM;
    std::vector<BalanceGroup> groupsM;
    std::vector<Balance> balancesM;
    std::vector<SubBalance> subBalancesM;
};

} // namespace MOD
