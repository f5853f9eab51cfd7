// What the page shows of one event: rows of a label, what the event says and what memory holds.
#pragma once

#include "facts/EventFacts.h"

#include <string>
#include <vector>

namespace reader {

struct PageRow {
    std::string label;
    std::string said;    // by the event
    std::string held;    // by memory; several lines where a list is held
    LineNumber saidLine; // 0 when the event doesn't say it
    LineNumber heldLine; // first line of what memory holds; 0 when it holds nothing
};

// In the order of the dump.
std::vector<PageRow> pageRows(EventFacts const& event);

// The row to which something on a line of the event belongs; none for a line before all of them.
std::optional<std::size_t> rowOfLine(std::vector<PageRow> const& rows, LineNumber line);

} // namespace reader
