#include "DumpText.h"

#include <algorithm>
#include <ostream>
#include <string_view>

namespace MOD {

namespace {

constexpr std::string_view columnGap = "  ";

// In characters of UTF-8.
std::size_t width(std::string_view text) noexcept {
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xc0) != 0x80; }));
}

std::string padded(std::string const& cell, std::size_t toWidth, bool alignedRight) {
    std::string const blanks(toWidth - width(cell), ' ');
    return alignedRight ? blanks + cell : cell + blanks;
}

void write(std::ostream& out, std::string_view text) {
    auto const firstWord = std::min(text.find_first_of(" \n"), text.size());
    out << text.substr(0, firstWord);
    out.write(text.data() + firstWord, static_cast<std::streamsize>(text.size() - firstWord));
}

} // namespace

std::string counted(std::size_t count, char const* noun) {
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

void DumpText::writeLines(std::ostream& out) const {
    write(out, textM);
}

void DumpText::writeUpToLastLineEnd(std::ostream& out) const {
    write(out, std::string_view(textM).substr(0, textM.size() - 1));
}

// The first line is the headings; dashes go below it.
void DumpText::layOut(Layout const& layout, std::vector<Cells> const& lines) {
    std::vector<std::size_t> widths(layout.alignedRight.size());
    for (auto const& cells : lines) {
        for (std::size_t i = 0; i < cells.size(); ++i) {
            widths[i] = std::max(widths[i], width(cells[i]));
        }
    }
    Cells dashes;
    for (auto const columnWidth : widths) {
        dashes.emplace_back(columnWidth, '-');
    }
    auto const appendLine = [&](Cells const& cells, bool marked) {
        std::string text(layout.indent, ' ');
        if (marked) {
            text.replace(layout.indent - columnGap.size(), 1, ">");
        }
        for (std::size_t i = 0; i < cells.size(); ++i) {
            text += padded(cells[i], widths[i], layout.alignedRight[i]);
            text += columnGap;
        }
        text.erase(text.find_last_not_of(' ') + 1);
        textM += text + '\n';
    };
    for (std::size_t i = 0; i < lines.size(); ++i) {
        appendLine(lines[i], i > 0 && i == layout.markedLine);
        if (i == 0) {
            appendLine(dashes, false);
        }
    }
}

} // namespace MOD
