#include "TableLoader.h"

#include "RW/RWDBDatabase.h"

#include "DBC/DatabasePlugIn.h"

#include <stdexcept>

namespace MOD {

namespace {

void require(RWDBReader const& reader, char const* table) {
    if (!reader.isValid()) {
        throw std::runtime_error("table " + std::string(table) + " can't be read: " +
                                 DBC::DatabasePlugIn::errorMessage(reader.status()).str());
    }
}

} // namespace

TableLoader::TableLoader(RWDBConnection connection, TextPool& texts, RowReport report,
                         std::stop_token stop)
    : connectionM(std::move(connection)), textsM(texts), reportM(std::move(report)),
      stopM(std::move(stop)) {
}

DAT::LoadedTable& TableLoader::countsOf(char const* table) {
    auto const known =
        std::find_if(loadedM.begin(), loadedM.end(),
                     [&](DAT::LoadedTable const& each) { return each.name == table; });
    return known == loadedM.end() ? loadedM.emplace_back(DAT::LoadedTable{table}) : *known;
}

void TableLoader::reject(char const* table, std::string const& key, std::string const& reason) {
    ++countsOf(table).rejected;
    reportM(table, key, reason);
}

RWDBReader TableLoader::open(char const* table) const {
    auto const database = connectionM.database();
    auto const source = database.table(table);
    auto selector = database.selector();
    for (auto const& cell : cellsM) {
        selector << source[cell.column];
    }
    auto reader = selector.reader();
    require(reader, table);
    return reader;
}

// Moves to the next row and reads its values; false after the last one.
bool TableLoader::readRow(RWDBReader& reader, char const* table) {
    if (stopM.stop_requested()) {
        throw std::runtime_error("reading of table " + std::string(table) + " was abandoned");
    }
    bool const found = reader();
    require(reader, table);
    if (found) {
        for (auto& cell : cellsM) {
            reader >> cell.text;
            cell.isNull = reader.wasNull();
        }
    }
    return found;
}

std::string TableLoader::keyAsRead(std::size_t keyLength) const {
    std::string key;
    for (auto const& cell : std::span(cellsM).first(keyLength)) {
        key +=
            (key.empty() ? "" : ", ") + (cell.isNull ? std::string(cell.column) + " NULL"
                                                     : namedValue(cell.column, cell.text.view()));
    }
    return key;
}

std::string namedValue(char const* column, std::string_view value) {
    return std::string(column) + " '" + shownText(value) + "'";
}

std::string noUsableRow(char const* table,
                        std::initializer_list<std::pair<char const*, std::string>> key) {
    std::string text;
    for (auto const& [column, value] : key) {
        text += (text.empty() ? "" : ", ") + namedValue(column, value);
    }
    return std::string(table) + " has no usable row with " + text;
}

} // namespace MOD
