#include "text/ModuleText.h"

namespace reader {

namespace {

constexpr std::string_view noRows = "none";
constexpr std::size_t columnGap = 2;

std::string_view trimmed(std::string_view text) {
    auto const begin = text.find_first_not_of(' ');
    return begin == std::string_view::npos
               ? std::string_view()
               : text.substr(begin, text.find_last_not_of(' ') + 1 - begin);
}

bool isPlain(std::string_view line) {
    return std::none_of(line.begin(), line.end(), [](char c) { return (c & 0x80) != 0; });
}

bool beginsCharacter(char c) {
    return (c & 0xc0) != 0x80;
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

void ModuleText::read(std::string_view text, LineNumber number, bool isCut) {
    itemsM.clear();
    tablesM.clear();
    cellsM.clear();
    Lines lines(text, number);
    std::string_view line;
    bool isInTable = false;
    while (lines.next(line)) {
        bool isMarked = false;
        if (isInTable && splitRow(line, isMarked)) {
            auto& table = tablesM.back();
            table.markedRow = isMarked ? table.rowCount : table.markedRow;
            ++table.rowCount;
            continue;
        }
        isInTable = false;
        if (indentOf(line) == line.size()) {
            continue;
        }
        bool const followsLine =
            !itemsM.empty() && !itemsM.back().table && itemsM.back().line + 1 == lines.number();
        if (followsLine && readRuler(line)) {
            auto const headings = itemsM.back();
            bool headingsMarked = false;
            beginTable(headings.line);
            isInTable = splitRow(headings.text, headingsMarked) && !headingsMarked;
            if (isInTable) {
                itemsM.back() = {{}, headings.line, tablesM.size() - 1};
                continue;
            }
            tablesM.pop_back();
        }
        if (followsLine && trimmed(line) == noRows &&
            indentOf(line) > indentOf(itemsM.back().text)) {
            addEmptyTable(line, lines.number());
            continue;
        }
        itemsM.push_back({line, lines.number(), std::nullopt});
    }
    if (isCut && !itemsM.empty() && itemsM.back().table) {
        tablesM.back().isComplete = false;
    }
}

// A line of dashes and blanks, no gap wider than that between columns.
bool ModuleText::readRuler(std::string_view line) {
    columnsM.indent = indentOf(line);
    if (columnsM.indent == line.size() || line[columnsM.indent] != '-' ||
        line.find_first_not_of("- ") != std::string_view::npos) {
        return false;
    }
    columnsM.begins.clear();
    columnsM.ends.clear();
    for (auto at = columnsM.indent; at < line.size();) {
        auto const end = std::min(line.find(' ', at), line.size());
        columnsM.begins.push_back(at);
        columnsM.ends.push_back(end);
        auto const following = line.find('-', end);
        if (following != std::string_view::npos && following != end + columnGap) {
            return false;
        }
        at = following;
    }
    return true;
}

void ModuleText::beginTable(LineNumber line) {
    Table table;
    auto const titleItem = itemsM.size() >= 2 ? itemsM.size() - 2 : itemsM.size();
    if (titleItem < itemsM.size() && !itemsM[titleItem].table) {
        table.title = itemsM[titleItem].text;
    }
    table.line = line;
    table.columnCount = columnsM.begins.size();
    table.cellsM = &cellsM;
    table.firstM = cellsM.size();
    tablesM.push_back(table);
}

void ModuleText::addEmptyTable(std::string_view, LineNumber number) {
    Table table;
    table.title = itemsM.back().text;
    table.line = number;
    table.cellsM = &cellsM;
    table.firstM = cellsM.size();
    tablesM.push_back(table);
    itemsM.push_back({{}, number, tablesM.size() - 1});
}

// Adds a row's cells when the line fits the columns: blanks before, between and after them. The
// last column may be as wide as it likes.
bool ModuleText::splitRow(std::string_view line, bool& isMarked) {
    auto const indent = columnsM.indent;
    if (line.size() <= indent) {
        return false;
    }
    auto const first = indentOf(line);
    isMarked = first + columnGap == indent && line[first] == '>';
    if (isMarked ? line.find_first_not_of(' ', first + 1) < indent : first < indent) {
        return false;
    }
    auto const before = cellsM.size();
    bool const fits = isPlain(line) ? splitPlainRow(line) : splitWideRow(line);
    if (!fits) {
        cellsM.resize(before);
    }
    return fits;
}

bool ModuleText::splitPlainRow(std::string_view line) {
    auto const columns = columnsM.begins.size();
    for (std::size_t i = 0; i < columns; ++i) {
        auto const begin = std::min(columnsM.begins[i], line.size());
        bool const isLast = i + 1 == columns;
        auto const end = isLast ? line.size() : std::min(columnsM.ends[i], line.size());
        auto const gapEnd = isLast ? end : std::min(columnsM.begins[i + 1], line.size());
        for (auto at = end; at < gapEnd; ++at) {
            if (line[at] != ' ') {
                return false;
            }
        }
        cellsM.push_back(trimmed(line.substr(begin, end - begin)));
    }
    return true;
}

// Columns count characters: a byte that goes on with a character of UTF-8 takes no place.
bool ModuleText::splitWideRow(std::string_view line) {
    auto const columns = columnsM.begins.size();
    std::size_t at = 0;
    std::size_t character = 0;
    auto const advanceTo = [&](std::size_t wanted) {
        while (at < line.size() && (character < wanted || !beginsCharacter(line[at]))) {
            character += beginsCharacter(line[at]) ? 1 : 0;
            ++at;
        }
        return at;
    };
    for (std::size_t i = 0; i < columns; ++i) {
        auto const begin = advanceTo(columnsM.begins[i]);
        bool const isLast = i + 1 == columns;
        auto const end = isLast ? line.size() : advanceTo(columnsM.ends[i]);
        if (!isLast &&
            !trimmed(line.substr(end, advanceTo(columnsM.begins[i + 1]) - end)).empty()) {
            return false;
        }
        cellsM.push_back(trimmed(line.substr(begin, end - begin)));
    }
    return true;
}

} // namespace reader
