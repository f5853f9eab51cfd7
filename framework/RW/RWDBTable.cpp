#include "RW/RWDBTable.h"

#include <stdexcept>

namespace {

RWCString checkedIdentifier(RWCString name) {
    constexpr std::string_view digits = "0123456789";
    constexpr std::string_view allowed =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_0123456789";
    if (name.isNull() || digits.find(name.view().front()) != std::string_view::npos ||
        name.view().find_first_not_of(allowed) != std::string_view::npos) {
        throw std::invalid_argument("'" + name.str() + "' is not a valid table or column name");
    }
    return name;
}

} // namespace

RWDBColumn::RWDBColumn(RWCString tableName, RWCString name)
    : tableNameM(checkedIdentifier(std::move(tableName))),
      nameM(checkedIdentifier(std::move(name))) {
}

RWDBTable::RWDBTable(RWCString name) : nameM(checkedIdentifier(std::move(name))) {
}
