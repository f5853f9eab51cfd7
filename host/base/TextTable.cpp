#include "base/TextTable.h"

#include <fmt/format.h>

#include <algorithm>

namespace host {

std::string alignedTable(std::vector<TableRow> const& rows, std::string_view alignment) {
    std::vector<std::size_t> widths(alignment.size(), 0);
    for (auto const& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], row[i].size());
        }
    }
    std::string text;
    for (auto const& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            line += i == 0 ? "" : "  ";
            line += alignment[i] == 'r' ? fmt::format("{:>{}}", row[i], widths[i])
                                        : fmt::format("{:<{}}", row[i], widths[i]);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + "\n";
    }
    return text;
}

} // namespace host
