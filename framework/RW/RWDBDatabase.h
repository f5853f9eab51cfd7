// The database behind a connection: where its tables and selectors come from.
#pragma once

#include "RW/RWDBConnection.h"
#include "RW/RWDBSelector.h"
#include "RW/RWDBTable.h"

class RWDBDatabase {
public:
    explicit RWDBDatabase(RWDBConnection connection) : connectionM(std::move(connection)) {}

    // Throws std::invalid_argument for a name that is no plain identifier. Whether the table exists
    // shows when a reader runs.
    RWDBTable table(RWCString const& name) const { return RWDBTable(name); }
    RWDBSelector selector() const { return RWDBSelector(connectionM); }

private:
    RWDBConnection connectionM;
};
