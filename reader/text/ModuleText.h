// A text that a data module wrote into a dump, taken apart into lines and tables. A table is what
// has a line of headings, a ruler of dashes below it and rows that fit its columns; what it means
// is not known here. Cells are cut out of their lines when they are asked for: most never are.
// Everything points into the text, which stays the caller's.
#pragma once

#include "text/Lines.h"
#include "text/TableLayouts.h"

#include <optional>
#include <vector>

namespace reader {

class ModuleText;

class Table {
public:
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    // The line above the headings, which says what the table lists; empty when there is none.
    std::string_view title;
    // Of the headings; of the word "none" in a table without rows.
    LineNumber line = 0;
    std::size_t columnCount = 0;
    std::size_t rowCount = 0;
    // The row before which a ">" stands.
    std::size_t markedRow = none;
    // False when the text was cut within or right after it: rows may be missing.
    bool isComplete = true;

    std::string_view heading(std::size_t column) const { return layoutM->columns[column].heading; }
    // Without the blanks around it; empty when there is no such column.
    std::string_view cell(std::size_t row, std::size_t column) const;
    std::string_view cell(std::size_t row, std::string_view heading) const;
    std::size_t column(std::string_view heading) const;
    LineNumber lineOf(std::size_t row) const { return line + 2 + row; }

private:
    friend class ModuleText;

    ModuleText const* textM = nullptr;
    TableLayout const* layoutM = nullptr; // null without rows
    std::size_t firstRowM = 0;            // among those of the text
};

class ModuleText {
public:
    struct Item {
        std::string_view text; // of a line, with its indentation
        LineNumber line = 0;
        std::optional<std::size_t> table; // its number, when it is one
    };

    ModuleText() = default;
    ModuleText(ModuleText const&) = delete;
    ModuleText& operator=(ModuleText const&) = delete;

    // Replaces what was read before. The layouts stay the caller's, and are used as long as the
    // tables are. A text that is cut goes no further than the file does.
    void read(LinedText const& text, LineNumber line, TableLayouts& layouts, bool isCut = false);

    // In their order. Empty lines are left out.
    std::vector<Item> const& items() const noexcept { return itemsM; }
    std::vector<Table> const& tables() const noexcept { return tablesM; }
    // The first table whose title, without indentation, begins so.
    Table const* tableOf(std::string_view title) const;

private:
    friend class Table;

    void beginTable(LineNumber number, TableLayout const* layout);

    std::vector<Item> itemsM;
    std::vector<Table> tablesM;
    std::vector<std::string_view> rowsM; // of all tables
    bool isPlainM = true;                // every byte is a character
};

} // namespace reader
