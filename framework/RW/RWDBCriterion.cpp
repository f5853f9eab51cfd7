#include "RW/RWDBCriterion.h"

#include <algorithm>

namespace {

// Not part of any identifier or word of a criterion.
constexpr char valueMark = '?';

std::string qualified(RWDBColumn const& column) {
    return column.tableName().str() + "." + column.name().str();
}

} // namespace

std::string RWDBCriterion::statementText() const {
    std::string text;
    std::size_t number = 0;
    for (char const c : textM) {
        if (c == valueMark) {
            text += ":v" + std::to_string(++number);
        } else {
            text += c;
        }
    }
    return text;
}

RWDBCriterion operator==(RWDBColumn const& left, RWDBColumn const& right) {
    RWDBCriterion criterion;
    criterion.textM = "(" + qualified(left) + " = " + qualified(right) + ")";
    criterion.useTable(left.tableName());
    criterion.useTable(right.tableName());
    return criterion;
}

RWDBCriterion operator==(RWDBColumn const& column, RWCString const& value) {
    RWDBCriterion criterion;
    criterion.textM = "(" + qualified(column) + " = " + valueMark + ")";
    criterion.useTable(column.tableName());
    criterion.valuesM.push_back(value.str());
    return criterion;
}

RWDBCriterion operator&&(RWDBCriterion const& left, RWDBCriterion const& right) {
    return RWDBCriterion::joined(left, "AND", right);
}

RWDBCriterion operator||(RWDBCriterion const& left, RWDBCriterion const& right) {
    return RWDBCriterion::joined(left, "OR", right);
}

RWDBCriterion RWDBCriterion::joined(RWDBCriterion const& left, char const* word,
                                    RWDBCriterion const& right) {
    RWDBCriterion criterion(left);
    criterion.textM = "(" + left.textM + " " + word + " " + right.textM + ")";
    for (auto const& name : right.tableNamesM) {
        criterion.useTable(name);
    }
    criterion.valuesM.insert(criterion.valuesM.end(), right.valuesM.begin(), right.valuesM.end());
    return criterion;
}

void RWDBCriterion::useTable(RWCString const& name) {
    if (std::find(tableNamesM.begin(), tableNamesM.end(), name) == tableNamesM.end()) {
        tableNamesM.push_back(name);
    }
}
