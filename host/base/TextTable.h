// Rows of texts, laid out in columns for people.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host {

using TableRow = std::vector<std::string>;

// One line a row, columns two blanks apart. The alignment has a letter for each column, 'l' or 'r';
// all rows have as many cells.
std::string alignedTable(std::vector<TableRow> const& rows, std::string_view alignment);

} // namespace host
