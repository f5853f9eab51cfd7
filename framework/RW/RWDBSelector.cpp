#include "RW/RWDBSelector.h"

#include "RW/RWDBReader.h"

#include <algorithm>

RWDBSelector& RWDBSelector::operator<<(RWDBColumn const& column) {
    columnsM.push_back(column);
    return *this;
}

RWDBReader RWDBSelector::reader() const {
    return RWDBReader(connectionM, *this);
}

std::string RWDBSelector::statementText() const {
    std::string columns;
    auto tables = criterionM.tableNames();
    for (auto const& column : columnsM) {
        columns +=
            (columns.empty() ? "" : ", ") + column.tableName().str() + "." + column.name().str();
        if (std::find(tables.begin(), tables.end(), column.tableName()) == tables.end()) {
            tables.push_back(column.tableName());
        }
    }
    std::string from;
    for (auto const& table : tables) {
        from += (from.empty() ? "" : ", ") + table.str();
    }
    auto const condition = criterionM.statementText();
    return "SELECT " + columns + " FROM " + from + (condition.empty() ? "" : " WHERE " + condition);
}
