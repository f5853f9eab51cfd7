#include "text/ModuleText.h"

namespace reader {

namespace {

constexpr std::string_view noRows = "none";

// Whether every byte is a character.
bool isPlain(std::string_view text) {
    unsigned char all = 0;
    for (auto const c : text) {
        all = static_cast<unsigned char>(all | static_cast<unsigned char>(c));
    }
    return all < 0x80;
}

bool isNoRows(std::string_view line, std::size_t indent) {
    auto const rest = line.substr(indent);
    return rest.starts_with(noRows) && rest.find_first_not_of(' ', noRows.size()) == rest.npos;
}

} // namespace

std::size_t Table::column(std::string_view sought) const {
    for (std::size_t i = 0; i < columnCount; ++i) {
        if (heading(i) == sought) {
            return i;
        }
    }
    return none;
}

std::string_view Table::cell(std::size_t row, std::size_t column) const {
    return column < columnCount
               ? layoutM->cell(textM->rowsM[firstRowM + row], textM->isPlainM, column)
               : std::string_view();
}

std::string_view Table::cell(std::size_t row, std::string_view sought) const {
    return cell(row, column(sought));
}

Table const* ModuleText::tableOf(std::string_view title) const {
    for (auto const& table : tablesM) {
        if (table.title.substr(indentOf(table.title)).starts_with(title)) {
            return &table;
        }
    }
    return nullptr;
}

void ModuleText::read(LinedText const& text, LineNumber number, TableLayouts& layouts, bool isCut) {
    itemsM.clear();
    tablesM.clear();
    rowsM.clear();
    isPlainM = isPlain(text.bytes());
    Lines lines(text, number);
    std::string_view line;
    TableLayout const* layout = nullptr; // of the table whose rows may follow
    while (lines.next(line)) {
        bool isMarked = false;
        if (layout != nullptr && layout->fits(line, isPlainM, isMarked)) {
            auto& table = tablesM.back();
            table.markedRow = isMarked ? table.rowCount : table.markedRow;
            ++table.rowCount;
            rowsM.push_back(line);
            continue;
        }
        layout = nullptr;
        auto const indent = indentOf(line);
        if (indent == line.size()) {
            continue;
        }
        bool const followsLine =
            !itemsM.empty() && !itemsM.back().table && itemsM.back().line + 1 == lines.number();
        if (followsLine && line[indent] == '-') {
            layout = layouts.find(itemsM.back().text, line);
            if (layout != nullptr) {
                auto const headings = itemsM.back().line;
                itemsM.pop_back();
                beginTable(headings, layout);
                continue;
            }
        }
        if (followsLine && isNoRows(line, indent) && indent > indentOf(itemsM.back().text)) {
            beginTable(lines.number(), nullptr);
            continue;
        }
        itemsM.push_back({line, lines.number(), std::nullopt});
    }
    if (isCut && !itemsM.empty() && itemsM.back().table) {
        tablesM.back().isComplete = false;
    }
}

void ModuleText::beginTable(LineNumber number, TableLayout const* layout) {
    Table table;
    if (!itemsM.empty() && !itemsM.back().table) {
        table.title = itemsM.back().text;
    }
    table.line = number;
    table.columnCount = layout == nullptr ? 0 : layout->columns.size();
    table.textM = this;
    table.layoutM = layout;
    table.firstRowM = rowsM.size();
    itemsM.push_back({{}, number, tablesM.size()});
    tablesM.push_back(table);
}

} // namespace reader
