#include "program/HtmlCommand.h"

#include "page/Page.h"
#include "program/EventJudge.h"
#include "text/Hash.h"

#include <unordered_map>
#include <unordered_set>

namespace reader {

namespace {

std::uint64_t keyOf(EventFacts const& event) {
    return hashOf(event.service.text, hashOf(event.customer.text));
}

// The same choice of events in the older file.
Options ofOlder(Options options) {
    options.files = {options.older};
    options.onlyFindings = false;
    return options;
}

std::vector<PageKind> pageKinds() {
    std::vector<PageKind> kinds;
    for (auto const& kind : findingKinds) {
        // The page counts from the worst.
        auto const severity = severityNames.size() - 1 - static_cast<std::size_t>(kind.severity);
        kinds.push_back({kind.name, static_cast<int>(severity), kind.sentence});
    }
    return kinds;
}

std::vector<PageFinding> pageFindings(std::vector<Finding> const& findings) {
    std::vector<PageFinding> shown;
    for (auto const& finding : findings) {
        shown.push_back(
            {static_cast<std::size_t>(finding.kind), sentenceOf(finding), finding.line});
    }
    return shown;
}

// The rows that the older file shows for each event.
class OlderRows {
public:
    explicit OlderRows(Options const& options) {
        if (!options.older.empty()) {
            forEachJudged(ofOlder(options), [this](JudgedEvent const& judged) {
                rowsM[keyOf(judged.event)] = pageRows(judged.event);
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
    forEachJudged(ofOlder(options), [&](JudgedEvent const& judged) {
        auto const& event = judged.event;
        if (keys.find(keyOf(event)) == keys.end()) {
            page.add({event,
                      options.files.size(),
                      pageRows(event),
                      pageFindings(judged.findings),
                      PageChange::gone,
                      {}});
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
    Page page(files, pageKinds(), isCompared);
    std::unordered_set<std::uint64_t> keys;
    forEachJudged(options, [&](JudgedEvent const& judged) {
        auto const& event = judged.event;
        PageEvent shown{event,
                        judged.fileNumber,
                        pageRows(event),
                        pageFindings(judged.findings),
                        PageChange::none,
                        {}};
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
