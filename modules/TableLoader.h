// Loads the tables of a data module from the reference database: each table, declared once as a
// constant list of columns, becomes a vector of rows that is sorted by the table's columns, the key
// first, and has each key once. The outcome does not depend on the order in which the database
// returns rows.
//
// A row that can't be used is reported once and left out. A table that can't be read ends the
// loading with a std::runtime_error that names it.
#pragma once

#include "ColumnValue.h"

#include "DAT/Reloadable.h"
#include "RW/RWDBConnection.h"
#include "RW/RWDBReader.h"

#include <algorithm>
#include <functional>
#include <initializer_list>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace MOD {

template <class Row>
struct Column {
    char const* name;
    ColumnMember<Row> member;
};

template <class Row>
struct Table {
    char const* name;
    // How many columns, from the first, are the key. No two rows of a table have the same key.
    std::size_t keyLength;
    std::span<Column<Row> const> columns;
};

// Called for each row that is left out: the table, the row's key and the reason.
using RowReport = std::function<void(std::string const& table, std::string const& key,
                                     std::string const& reason)>;

// Why a row with valid values can't be used; empty when it can.
template <class Row>
using RowFault = std::function<std::string(Row const&)>;

class TableLoader {
public:
    // Only the loader may use the connection; the pool stays the caller's. Loading ends with a
    // std::runtime_error soon after a stop is requested.
    TableLoader(RWDBConnection connection, TextPool& texts, RowReport report, std::stop_token stop);

    template <class Row>
    std::vector<Row> load(Table<Row> const& table, RowFault<Row> const& fault = {});

    // Leaves out the loaded rows that have a fault; returns whether there were any.
    template <class Row>
    bool leaveOut(Table<Row> const& table, std::vector<Row>& rows, RowFault<Row> const& fault);

    // The tables so far, in the order of loading.
    std::vector<DAT::LoadedTable> const& loaded() const noexcept { return loadedM; }

private:
    // One value of the row that is being read.
    struct Cell {
        char const* column;
        RWCString text;
        bool isNull;
    };

    DAT::LoadedTable& countsOf(char const* table);
    void reject(char const* table, std::string const& key, std::string const& reason);
    RWDBReader open(char const* table) const;
    bool readRow(RWDBReader& reader, char const* table);
    std::string keyAsRead(std::size_t keyLength) const;

    template <class Row>
    std::string takeRow(Table<Row> const& table, Row& row);
    template <class Value>
    std::string takeValue(Cell const& cell, Value& value);
    template <class Row>
    void sortByColumns(Table<Row> const& table, std::vector<Row>& rows) const;
    template <class Row>
    void leaveOutRepeatedKeys(Table<Row> const& table, std::vector<Row>& rows);
    template <class Row>
    std::strong_ordering compareRows(std::span<Column<Row> const> columns, Row const& a,
                                     Row const& b) const;
    template <class Row>
    std::string keyOf(Table<Row> const& table, Row const& row) const;

    RWDBConnection connectionM;
    TextIntake textsM;
    RowReport reportM;
    std::stop_token stopM;
    std::vector<Cell> cellsM;
    std::vector<DAT::LoadedTable> loadedM;
};

// A column with its value in messages: ACCOUNT_ID '17'.
std::string namedValue(char const* column, std::string_view value);

// The fault of a reference to a row that is missing or was left out.
std::string noUsableRow(char const* table,
                        std::initializer_list<std::pair<char const*, std::string>> key);

// The fault of a validity that ends before it begins.
template <class Row>
std::string validityFault(Row const& row) {
    return row.validTo <= EndTime(row.validFrom) ? "the validity ends before it begins" : "";
}

// The fault of a step that doesn't end after the quantity at which it begins.
template <class Row>
std::string thresholdFault(Row const& row) {
    return row.thresholdTo && *row.thresholdTo <= row.thresholdFrom
               ? "the step ends before it begins"
               : "";
}

template <class Row>
std::vector<Row> TableLoader::load(Table<Row> const& table, RowFault<Row> const& fault) {
    cellsM.clear();
    for (auto const& column : table.columns) {
        cellsM.push_back({column.name, {}, false});
    }
    std::vector<Row> rows;
    auto reader = open(table.name);
    while (readRow(reader, table.name)) {
        Row row;
        auto reason = takeRow(table, row);
        if (reason.empty() && fault) {
            reason = fault(row);
        }
        if (reason.empty()) {
            rows.push_back(row);
        } else {
            reject(table.name, keyAsRead(table.keyLength), reason);
        }
    }
    sortByColumns(table, rows);
    leaveOutRepeatedKeys(table, rows);
    rows.shrink_to_fit();
    countsOf(table.name).rows = rows.size();
    return rows;
}

template <class Row>
bool TableLoader::leaveOut(Table<Row> const& table, std::vector<Row>& rows,
                           RowFault<Row> const& fault) {
    // The fault may use the rows, so they stay until all are checked.
    std::vector<Row> kept;
    for (auto const& row : rows) {
        if (auto const reason = fault(row); reason.empty()) {
            kept.push_back(row);
        } else {
            reject(table.name, keyOf(table, row), reason);
        }
    }
    bool const found = kept.size() < rows.size();
    if (found) {
        rows = std::move(kept);
        countsOf(table.name).rows = rows.size();
    }
    return found;
}

// Fills the row from the cells. Returns the reason when that isn't possible.
template <class Row>
std::string TableLoader::takeRow(Table<Row> const& table, Row& row) {
    std::string reason;
    for (std::size_t i = 0; i < cellsM.size() && reason.empty(); ++i) {
        reason = std::visit([&](auto member) { return takeValue(cellsM[i], row.*member); },
                            table.columns[i].member);
    }
    return reason;
}

template <class Value>
std::string TableLoader::takeValue(Cell const& cell, Value& value) {
    // Feeding systems write the empty text instead of NULL.
    if (cell.isNull || cell.text.isNull()) {
        return takesNull<Value> ? std::string() : std::string(cell.column) + " is missing";
    }
    auto const* const expected = parseValue(cell.text.view(), value, textsM);
    return expected == nullptr ? std::string()
                               : namedValue(cell.column, cell.text.view()) + " is not " + expected;
}

template <class Row>
void TableLoader::sortByColumns(Table<Row> const& table, std::vector<Row>& rows) const {
    auto const less = [&](Row const& a, Row const& b) {
        return std::is_lt(compareRows(table.columns, a, b));
    };
    // Most databases return most tables in the order of their keys.
    if (!std::is_sorted(rows.begin(), rows.end(), less)) {
        std::sort(rows.begin(), rows.end(), less);
    }
}

template <class Row>
void TableLoader::leaveOutRepeatedKeys(Table<Row> const& table, std::vector<Row>& rows) {
    auto const key = table.columns.first(table.keyLength);
    std::size_t kept = 0;
    for (auto const& row : rows) {
        if (kept > 0 && std::is_eq(compareRows(key, rows[kept - 1], row))) {
            reject(table.name, keyOf(table, row), "another row has the same key");
        } else {
            rows[kept++] = row;
        }
    }
    rows.resize(kept);
}

template <class Row>
std::strong_ordering TableLoader::compareRows(std::span<Column<Row> const> columns, Row const& a,
                                              Row const& b) const {
    for (auto const& column : columns) {
        auto const order = std::visit(
            [&](auto member) { return compareValues(a.*member, b.*member, textsM.pool()); },
            column.member);
        if (std::is_neq(order)) {
            return order;
        }
    }
    return std::strong_ordering::equal;
}

template <class Row>
std::string TableLoader::keyOf(Table<Row> const& table, Row const& row) const {
    std::string key;
    for (auto const& column : table.columns.first(table.keyLength)) {
        auto const value = std::visit(
            [&](auto member) { return shownValue(row.*member, textsM.pool()); }, column.member);
        key += (key.empty() ? "" : ", ") + namedValue(column.name, value);
    }
    return key;
}

// The rows of a sorted vector for which the order returns zero; it compares a row with what is
// searched for, and agrees with the sorting.
template <class Row, class Order>
std::span<Row const> equalRows(std::vector<Row> const& rows, Order order) {
    auto const first = std::partition_point(rows.begin(), rows.end(),
                                            [&](Row const& row) { return std::is_lt(order(row)); });
    auto const last = std::partition_point(first, rows.end(),
                                           [&](Row const& row) { return std::is_eq(order(row)); });
    return {first, last};
}

// The row for which the order returns zero, or null.
template <class Row, class Order>
Row const* equalRow(std::vector<Row> const& rows, Order order) {
    auto const found = equalRows(rows, order);
    return found.empty() ? nullptr : found.data();
}

} // namespace MOD
