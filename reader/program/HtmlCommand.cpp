#include "program/HtmlCommand.h"

#include "page/Page.h"
#include "program/EventJudge.h"
#include "program/RereadableFile.h"

#include <optional>
#include <unordered_map>
#include <unordered_set>

namespace reader {

namespace {

// All events of the files, whichever are chosen.
Options ofAll(Options options) {
    options.filter = {};
    options.onlyFindings = false;
    return options;
}

Options ofOlder(Options const& options, RereadableFile const& older) {
    auto all = ofAll(options);
    all.files = {older.name()};
    all.paths = {older.path()};
    return all;
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
    shown.reserve(findings.size());
    for (auto const& finding : findings) {
        shown.push_back(
            {static_cast<std::size_t>(finding.kind), sentenceOf(finding), finding.line});
    }
    return shown;
}

// The rows that the older file shows for each event.
class OlderRows {
public:
    void add(EventFacts const& event) { rowsM[keyOf(event)] = pageRows(event); }

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

// Writes the page of the events, marked with what they were in an older file.
class PageWriter {
public:
    explicit PageWriter(Options const& options) : optionsM(options) {
        if (!options.older.empty()) {
            olderFileM.emplace(options.older);
        }
    }

    void write() {
        auto files = optionsM.files;
        if (olderFileM) {
            files.push_back(olderFileM->name());
            readOlder();
        }
        Page page(files, pageKinds(), olderFileM.has_value());
        addEvents(page);
        if (olderFileM) {
            addGone(page);
        }
        page.write(optionsM.page);
    }

private:
    void readOlder() {
        forEachJudged(ofOlder(optionsM, *olderFileM), [this](JudgedEvent const& judged) {
            olderRowsM.add(judged.event);
            if (optionsM.filter.lets(judged.event)) {
                olderChoiceM.insert(keyOf(judged.event));
            }
        });
    }

    // An event that the filters let through in either file is shown: what the filters look at may
    // be what changed.
    bool isShown(JudgedEvent const& judged) const {
        return (optionsM.filter.lets(judged.event) || olderChoiceM.contains(keyOf(judged.event))) &&
               (!optionsM.onlyFindings || !judged.findings.empty());
    }

    void addEvents(Page& page) {
        if (!olderFileM) {
            forEachJudged(optionsM, [&](JudgedEvent const& judged) {
                page.add(shownEvent(judged, judged.fileNumber, PageChange::none));
            });
            return;
        }
        forEachJudged(ofAll(optionsM), [&](JudgedEvent const& judged) {
            keysM.insert(keyOf(judged.event)); // also of those that aren't shown: they aren't gone
            if (isShown(judged)) {
                auto shown = shownEvent(judged, judged.fileNumber, PageChange::none);
                olderRowsM.compare(shown);
                page.add(shown);
            }
        });
    }

    // Events of the older file that none of the others has.
    void addGone(Page& page) {
        forEachJudged(ofOlder(optionsM, *olderFileM), [&](JudgedEvent const& judged) {
            if (!keysM.contains(keyOf(judged.event)) && isShown(judged)) {
                page.add(shownEvent(judged, optionsM.files.size(), PageChange::gone));
            }
        });
    }

    static PageEvent shownEvent(JudgedEvent const& judged, std::size_t file, PageChange change) {
        return {judged.event, file, pageRows(judged.event), pageFindings(judged.findings),
                change,       {}};
    }

    Options const& optionsM;
    std::optional<RereadableFile> olderFileM; // read before the others, and after them
    OlderRows olderRowsM;
    std::unordered_set<std::uint64_t> olderChoiceM; // keys that the filters let through there
    std::unordered_set<std::uint64_t> keysM;        // of the newer files
};

} // namespace

int writePage(Options const& options) {
    PageWriter(options).write();
    return 0;
}

} // namespace reader
