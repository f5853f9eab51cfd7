#include "text/SentencePattern.h"

namespace reader {

bool SentencePattern::takeValues(std::string_view line, Captures& values) const {
    auto const last = countM - 1;
    for (std::size_t i = 1; i < last; ++i) {
        auto const end = line.find(piecesM[i]);
        if (end == std::string_view::npos) {
            return false;
        }
        values[i - 1] = line.substr(0, end);
        line.remove_prefix(end + piecesM[i].size());
    }
    if (last == 0 || !line.ends_with(piecesM[last])) {
        return last == 0 && line.empty();
    }
    values[last - 1] = line.substr(0, line.size() - piecesM[last].size());
    return true;
}

} // namespace reader
