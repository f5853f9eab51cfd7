// A table and its columns, by name, for building a selector. Names are plain identifiers (letters,
// digits and underscores, no digit first) and are written into the statement as they are; any other
// name throws std::invalid_argument. Values.
#pragma once

#include "RW/RWCString.h"

class RWDBColumn {
public:
    RWDBColumn(RWCString tableName, RWCString name);

    RWCString const& tableName() const noexcept { return tableNameM; }
    RWCString const& name() const noexcept { return nameM; }

private:
    RWCString tableNameM;
    RWCString nameM;
};

class RWDBTable {
public:
    explicit RWDBTable(RWCString name);

    RWDBColumn operator[](RWCString const& columnName) const {
        return RWDBColumn(nameM, columnName);
    }

private:
    RWCString nameM;
};
