// The database of a connection: makes its tables and selectors.
#pragma once

#include "RW/RWDBConnection.h"
#include "RW/RWDBSelector.h"
#include "RW/RWDBTable.h"

class RWDBDatabase {
public:
    explicit RWDBDatabase(RWDBConnection connection) : connectionM(std::move(connection)) {}

    // Throws std::invalid_argument for a name that isn't a plain identifier. A missing table makes
    // the reader invalid.
    RWDBTable table(RWCString const& name) const { return RWDBTable(name); }
    RWDBSelector selector() const { return RWDBSelector(connectionM); }

private:
    RWDBConnection connectionM;
};
