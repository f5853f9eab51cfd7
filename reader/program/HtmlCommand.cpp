#include "program/HtmlCommand.h"

#include "facts/FactReader.h"
#include "page/Page.h"
#include "program/Walk.h"
#include "text/Hash.h"

#include <unordered_map>
#include <unordered_set>

namespace reader {

namespace {

std::uint64_t keyOf(EventFacts const& event) {
    return hashOf(event.service.text, hashOf(event.customer.text));
}

// Visits the events that the filter lets through.
template <class Visitor>
void forEachEvent(std::vector<std::string> const& files, Filter const& filter,
                  Visitor const& visit) {
    Walk walk(files);
    FactReader reader;
    walk.forEach([&](EventText const& text, std::size_t file) {
        if (!text.isOutside) {
            auto const& event = reader.read(text);
            if (filter.lets(event)) {
                visit(event, file);
            }
        }
    });
}

// The rows that the older file shows for each event.
class OlderRows {
public:
    explicit OlderRows(Options const& options) {
        if (!options.older.empty()) {
            forEachEvent({options.older}, options.filter, [this](EventFacts const& event, auto) {
                rowsM[keyOf(event)] = pageRows(event);
            });
        }
    }

    // Says what each row of the event was, and whether the event changed.
    void compare(PageEvent& event) const {
        auto const older = rowsM.find(keyOf(event.facts));
        if (older == rowsM.end()) {
            event.change = PageChange::added;
            return;
        }
        std::unordered_map<std::string, std::size_t> seen; // rows with the label
        for (auto const& row : event.rows) {
            auto const* const was = rowOf(older->second, row.label, seen[row.label]++);
            event.before.push_back(difference(row, was));
            if (!event.before.back().empty()) {
                event.change = PageChange::changed;
            }
        }
    }

private:
    static PageRow const* rowOf(std::vector<PageRow> const& rows, std::string const& label,
                                std::size_t occurrence) {
        for (auto const& row : rows) {
            if (row.label == label && occurrence-- == 0) {
                return &row;
            }
        }
        return nullptr;
    }

    static std::string difference(PageRow const& row, PageRow const* was) {
        if (was == nullptr) {
            return "not there";
        }
        std::string text;
        if (was->said != row.said) {
            text = "the event said " + (was->said.empty() ? "nothing" : was->said);
        }
        if (was->held != row.held) {
            text += text.empty() ? "" : "\n";
            text += was->held.empty() ? "memory held nothing" : was->held;
        }
        return text;
    }

    std::unordered_map<std::uint64_t, std::vector<PageRow>> rowsM;
};

// Events of the older file that are not among the keys.
void addGone(Options const& options, std::unordered_set<std::uint64_t> const& keys, Page& page) {
    forEachEvent({options.older}, options.filter, [&](EventFacts const& event, std::size_t) {
        if (keys.find(keyOf(event)) == keys.end()) {
            page.add({event, options.files.size(), pageRows(event), {}, PageChange::gone, {}});
        }
    });
}

} // namespace

int writePage(Options const& options) {
    bool const isCompared = !options.older.empty();
    OlderRows const older(options);
    auto files = options.files;
    if (isCompared) {
        files.push_back(options.older);
    }
    Page page(files, {}, isCompared);
    std::unordered_set<std::uint64_t> keys;
    forEachEvent(options.files, options.filter, [&](EventFacts const& event, std::size_t file) {
        PageEvent shown{event, file, pageRows(event), {}, PageChange::none, {}};
        if (isCompared) {
            older.compare(shown);
            keys.insert(keyOf(event));
        }
        page.add(shown);
    });
    if (isCompared) {
        addGone(options, keys, page);
    }
    page.write(options.page);
    return 0;
}

} // namespace reader
