// A text that a data module wrote into a dump, taken apart into lines and tables. A table is what
// has a line of headings, a ruler of dashes below it and rows that fit its columns; what it means
// is not known here. Everything points into the text, which stays the caller's.
#pragma once

#include "text/Lines.h"

#include <optional>
#include <vector>

namespace reader {

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

    std::string_view heading(std::size_t column) const { return (*cellsM)[firstM + column]; }
    // Empty when there is no such column.
    std::string_view cell(std::size_t row, std::size_t column) const {
        return column < columnCount ? (*cellsM)[firstM + (row + 1) * columnCount + column]
                                    : std::string_view();
    }
    std::string_view cell(std::size_t row, std::string_view heading) const;
    std::size_t column(std::string_view heading) const;
    LineNumber lineOf(std::size_t row) const { return line + 2 + row; }

private:
    friend class ModuleText;

    std::vector<std::string_view> const* cellsM = nullptr;
    std::size_t firstM = 0;
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

    // Replaces what was read before. A text that is cut goes no further than the file does.
    void read(std::string_view text, LineNumber line, bool isCut = false);

    // In their order. Empty lines are left out.
    std::vector<Item> const& items() const noexcept { return itemsM; }
    std::vector<Table> const& tables() const noexcept { return tablesM; }
    // The first table whose title, without indentation, begins so.
    Table const* tableOf(std::string_view title) const;

private:
    struct Columns {
        std::size_t indent = 0;
        std::vector<std::size_t> begins; // in characters, from the line's begin
        std::vector<std::size_t> ends;
    };

    bool readRuler(std::string_view line);
    bool splitRow(std::string_view line, bool& isMarked);
    bool splitPlainRow(std::string_view line);
    bool splitWideRow(std::string_view line);
    void beginTable(LineNumber line);
    void addEmptyTable(std::string_view line, LineNumber number);

    std::vector<Item> itemsM;
    std::vector<Table> tablesM;
    std::vector<std::string_view> cellsM;
    Columns columnsM;
};

} // namespace reader
