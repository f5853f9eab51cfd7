// A condition on the columns of a selector's tables. Columns compare with columns and with values;
// a value never becomes part of the statement's text, it is bound to a placeholder. Each operator
// makes one bracketed group, so that the statement shows the grouping of the expression. A value.
#pragma once

#include "RW/RWCString.h"
#include "RW/RWDBTable.h"

#include <string>
#include <vector>

class RWDBCriterion {
public:
    // The names of the tables, each once, in order of first use.
    std::vector<RWCString> const& tableNames() const noexcept { return tableNamesM; }
    std::vector<std::string> const& values() const noexcept { return valuesM; }
    // SQL, with the placeholders ":v1", ":v2" and so on in the order of the values.
    std::string statementText() const;

    friend RWDBCriterion operator==(RWDBColumn const& left, RWDBColumn const& right);
    friend RWDBCriterion operator==(RWDBColumn const& column, RWCString const& value);
    friend RWDBCriterion operator&&(RWDBCriterion const& left, RWDBCriterion const& right);
    friend RWDBCriterion operator||(RWDBCriterion const& left, RWDBCriterion const& right);

private:
    static RWDBCriterion joined(RWDBCriterion const& left, char const* word,
                                RWDBCriterion const& right);
    void useTable(RWCString const& name);

    // The text with a mark for each value.
    std::string textM;
    std::vector<RWCString> tableNamesM;
    std::vector<std::string> valuesM;
};

// Declared again so that they are found by argument-dependent look-up.
RWDBCriterion operator==(RWDBColumn const& left, RWDBColumn const& right);
RWDBCriterion operator==(RWDBColumn const& column, RWCString const& value);
