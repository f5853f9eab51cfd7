// The columns of the lists that data modules write, by their headings and the ruler of dashes below
// them. The same lists stand in event after event: what their headings mean is found out once.
#pragma once

#include "text/Hash.h"

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace reader {

struct TableLayout {
    // In characters, from the line's begin.
    struct Column {
        std::size_t begin;
        std::size_t end;
        std::string_view heading;
    };

    std::string headings;
    std::string ruler;
    std::vector<Column> columns;

    // Whether a line has blanks before, between and after the columns, but for the mark of a row.
    // The last column may be as wide as it likes. A plain line has no characters of several bytes.
    bool fits(std::string_view line, bool isPlain, bool& isMarked) const;
    // Without the blanks around it.
    std::string_view cell(std::string_view line, bool isPlain, std::size_t column) const;
};

class TableLayouts {
public:
    // Null when the lines are no headings with their ruler. Valid as long as this object.
    TableLayout const* find(std::string_view headings, std::string_view ruler);

    // About the memory that they take.
    std::size_t bytes() const noexcept { return bytesM; }
    void clear();

private:
    // By a hash of both lines, or one that follows from it.
    std::unordered_map<std::uint64_t, std::unique_ptr<TableLayout>> layoutsM;
    std::size_t bytesM = 0;
};

} // namespace reader
