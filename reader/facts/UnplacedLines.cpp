#include "facts/UnplacedLines.h"

namespace reader {

namespace {

constexpr std::string_view sectionLines[] = {"Event Account Info:",
                                             "Used Rating product Info:",
                                             "Used Rate Plan code: ",
                                             "Used Price model codes: ",
                                             "Event's own Discount:",
                                             "Event's owner Balance Information:",
                                             "All DiscountSharing & Sponsorship Information:"};

} // namespace

void UnplacedLines::add(LineNumber number, std::string_view line, char const* reason) {
    auto const end = static_cast<std::size_t>(line.data() + line.size() - textM.data());
    bool const isLast = textM.find_first_not_of('\n', end) == std::string_view::npos;
    if (!isCutM || !isLast) {
        linesM.push_back({number, line, reason});
    }
}

bool isSectionLine(std::string_view line) {
    if (line.empty() || (line[0] != 'E' && line[0] != 'U' && line[0] != 'A')) {
        return false;
    }
    return std::any_of(std::begin(sectionLines), std::end(sectionLines),
                       [&](auto known) { return line.starts_with(known); });
}

} // namespace reader
