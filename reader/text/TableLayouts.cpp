#include "text/TableLayouts.h"

#include "text/Lines.h"

namespace reader {

namespace {

constexpr std::size_t columnGap = 2;
constexpr auto npos = std::string_view::npos;

bool isBlank(std::string_view text) {
    return text.find_first_not_of(' ') == npos;
}

std::string_view trimmed(std::string_view text) {
    auto const begin = indentOf(text);
    return begin == text.size() ? std::string_view()
                                : text.substr(begin, text.find_last_not_of(' ') + 1 - begin);
}

bool beginsCharacter(char c) {
    return (c & 0xc0) != 0x80;
}

// The characters of a line from one to another. A byte that goes on with a character of UTF-8 takes
// no place.
std::string_view wideCharacters(std::string_view line, std::size_t from, std::size_t to) {
    std::size_t at = 0;
    std::size_t character = 0;
    auto const advanceTo = [&](std::size_t wanted) {
        while (at < line.size() && (character < wanted || !beginsCharacter(line[at]))) {
            character += beginsCharacter(line[at]) ? 1 : 0;
            ++at;
        }
        return at;
    };
    auto const begin = advanceTo(from);
    return line.substr(begin, advanceTo(to) - begin);
}

std::string_view characters(std::string_view line, bool isPlain, std::size_t from, std::size_t to) {
    if (!isPlain) {
        return wideCharacters(line, from, to);
    }
    from = std::min(from, line.size());
    return line.substr(from, to - from);
}

// Of a line of dashes and blanks, no gap wider than that between columns; empty for another line.
std::vector<TableLayout::Column> columnsOf(std::string_view ruler) {
    std::vector<TableLayout::Column> columns;
    if (ruler.find_first_not_of("- ") != npos) {
        return columns;
    }
    for (auto at = indentOf(ruler); at < ruler.size();) {
        auto const end = std::min(ruler.find(' ', at), ruler.size());
        columns.push_back({at, end, {}});
        auto const following = ruler.find('-', end);
        if (following != npos && following != end + columnGap) {
            return {};
        }
        at = following;
    }
    return columns;
}

} // namespace

bool TableLayout::fits(std::string_view line, bool isPlain, bool& isMarked) const {
    auto const indent = columns.front().begin;
    if (line.size() <= indent) {
        return false;
    }
    auto const first = indentOf(line);
    isMarked = first + columnGap == indent && line[first] == '>';
    if (isMarked ? line.find_first_not_of(' ', first + 1) < indent : first < indent) {
        return false;
    }
    for (std::size_t i = 0; i + 1 < columns.size(); ++i) {
        auto const gap = columns[i].end;
        if (!isBlank(characters(line, isPlain, gap, gap + columnGap))) {
            return false;
        }
    }
    return true;
}

std::string_view TableLayout::cell(std::string_view line, bool isPlain, std::size_t column) const {
    auto const& place = columns[column];
    auto const end = column + 1 == columns.size() ? line.size() : place.end;
    return trimmed(characters(line, isPlain, place.begin, end));
}

TableLayout const* TableLayouts::find(std::string_view headings, std::string_view ruler) {
    auto hash = hashOf(ruler, hashOf(headings));
    for (auto found = layoutsM.find(hash); found != layoutsM.end(); found = layoutsM.find(hash)) {
        if (found->second->headings == headings && found->second->ruler == ruler) {
            return found->second.get();
        }
        hash = mixed(hash, 1);
    }
    auto layout = std::make_unique<TableLayout>();
    layout->columns = columnsOf(ruler);
    layout->headings = headings;
    layout->ruler = ruler;
    bool isMarked = false;
    if (layout->columns.empty() || !layout->fits(layout->headings, false, isMarked) || isMarked) {
        return nullptr;
    }
    for (std::size_t i = 0; i < layout->columns.size(); ++i) {
        layout->columns[i].heading = layout->cell(layout->headings, false, i);
    }
    bytesM += sizeof(TableLayout) + headings.size() + ruler.size() +
              layout->columns.size() * sizeof(TableLayout::Column);
    return (layoutsM[hash] = std::move(layout)).get();
}

void TableLayouts::clear() {
    layoutsM.clear();
    bytesM = 0;
}

} // namespace reader
