#include "program/KeyChoice.h"

#include "facts/FactReader.h"
#include "program/Walk.h"

namespace reader {

Filter chosenInAny(Filter const& filter, std::vector<RereadableFile> const& files) {
    Filter chosen;
    if (filter.letsAllThrough()) {
        return chosen;
    }
    auto& keys = chosen.keys.emplace();
    FactReader reader;
    for (auto const& file : files) {
        Walk({file.name()}, {file.path()})
            .forEach(
                [&](EventText const& text, std::size_t) {
                    if (!text.isOutside && filter.lets(text, reader)) {
                        keys.insert(keyOf(reader.readOverview(text)));
                    }
                },
                Walk::Notices::quiet);
    }
    return chosen;
}

} // namespace reader
