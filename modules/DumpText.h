// The text of one dump, collected line by line and then written at once, so that only its first
// word depends on the stream's format. Lists have aligned columns: numbers to the right, everything
// else to the left.
#pragma once

#include "ColumnValue.h"

#include <fmt/format.h>

#include <iosfwd>
#include <iterator>
#include <span>
#include <string>
#include <vector>

namespace MOD {

template <class Row>
struct ListColumn {
    char const* heading;
    ColumnMember<Row> member;
    // Shown when there is no value.
    char const* absent = "none";
};

class DumpText {
public:
    // The pool of the rows that lists show; it stays the caller's.
    explicit DumpText(TextPool const& texts) : textsM(texts) {}

    template <class... Values>
    void line(fmt::format_string<Values...> format, Values&&... values) {
        fmt::format_to(std::back_inserter(textM), format, std::forward<Values>(values)...);
        textM += '\n';
    }

    // The headings and one line a row, or "none" without rows, indented by that many blanks. The
    // line of the marked row begins with ">".
    template <class Row>
    void list(std::size_t indent, std::span<ListColumn<Row> const> columns,
              std::span<Row const> rows, Row const* marked = nullptr);

    // Write the text. The first word has the stream's width and fill; the rest is written
    // unchanged. In the second form the caller ends the last line.
    void writeLines(std::ostream& out) const;
    void writeUpToLastLineEnd(std::ostream& out) const;

private:
    using Cells = std::vector<std::string>;

    struct Layout {
        std::size_t indent;
        std::vector<bool> alignedRight;
        std::size_t markedLine;
    };

    void layOut(Layout const& layout, std::vector<Cells> const& lines);

    TextPool const& textsM;
    std::string textM;
};

// "1 price model", "2 price models".
std::string counted(std::size_t count, char const* noun);

template <class Value>
constexpr bool isNumber = false;
template <>
inline constexpr bool isNumber<std::uint64_t> = true;
template <>
inline constexpr bool isNumber<std::int64_t> = true;
template <>
inline constexpr bool isNumber<Decimal> = true;
template <class Value>
constexpr bool isNumber<std::optional<Value>> = isNumber<Value>;

template <class Row>
void DumpText::list(std::size_t indent, std::span<ListColumn<Row> const> columns,
                    std::span<Row const> rows, Row const* marked) {
    if (rows.empty()) {
        line("{:{}}none", "", indent);
        return;
    }
    Row const example{};
    Layout layout{indent, {}, 0};
    std::vector<Cells> lines(1);
    for (auto const& column : columns) {
        layout.alignedRight.push_back(std::visit(
            [&](auto member) { return isNumber<std::decay_t<decltype(example.*member)>>; },
            column.member));
        lines.front().push_back(column.heading);
    }
    for (auto const& row : rows) {
        layout.markedLine = &row == marked ? lines.size() : layout.markedLine;
        auto& cells = lines.emplace_back();
        for (auto const& column : columns) {
            auto text = std::visit([&](auto member) { return shownValue(row.*member, textsM); },
                                   column.member);
            if (text.empty()) {
                text = column.absent;
            }
            cells.push_back(std::move(text));
        }
    }
    layOut(layout, lines);
}

} // namespace MOD
