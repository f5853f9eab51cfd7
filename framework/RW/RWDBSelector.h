// One SELECT statement: columns, and a condition, whose values are bound parameters. Rows come in
// the order in which the database returns them.
#pragma once

#include "RW/RWDBConnection.h"
#include "RW/RWDBCriterion.h"
#include "RW/RWDBTable.h"

#include <string>
#include <vector>

class RWDBReader;

class RWDBSelector {
public:
    explicit RWDBSelector(RWDBConnection connection) : connectionM(std::move(connection)) {}

    // Appends a column.
    RWDBSelector& operator<<(RWDBColumn const& column);
    void where(RWDBCriterion const& criterion) { criterionM = criterion; }

    // Runs the statement. The reader is not valid when the database refuses it.
    RWDBReader reader() const;

    std::string statementText() const;
    std::vector<std::string> const& values() const noexcept { return criterionM.values(); }
    std::size_t columnCount() const noexcept { return columnsM.size(); }

private:
    RWDBConnection connectionM;
    std::vector<RWDBColumn> columnsM;
    RWDBCriterion criterionM;
};
