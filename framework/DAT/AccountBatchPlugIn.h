// The account data module as its clients see it: the accounts, their services and what they own,
// held in memory, and the database connection module that they were loaded through.
#pragma once

#include "PLG/StdPlugIn.h"

#include <iosfwd>

namespace DBC {
class DatabasePlugIn;
}

namespace DAT::Account {

class BatchPlugIn : public PLG::StdPlugIn {
public:
    using StdPlugIn::StdPlugIn;
    ~BatchPlugIn() override;

    // The database connection module; null while the module is not usable. Not owned.
    virtual DBC::DatabasePlugIn* database() const = 0;

    // Writes what memory holds for a customer identifier, seen from one service of that customer
    // and one event type. The first value is written with the stream's fill and width.
    virtual void getDataDump(std::ostream& out, BAS::String const& customerId,
                             long const& serviceId, BAS::String const& serviceType,
                             BAS::String const& eventType) const = 0;
};

} // namespace DAT::Account
