#include "program/HtmlCommand.h"

#include "page/Page.h"
#include "program/EventJudge.h"
#include "program/RereadableFile.h"

#include <optional>
#include <unordered_map>
#include <unordered_set>

namespace reader {

namespace {

// The same choice of events in the older file, but with those that have no findings: what the
// newer file's events were is among them.
Options ofOlder(Options options, RereadableFile const& older) {
    options.files = {older.name()};
    options.paths = {older.path()};
    options.onlyFindings = false;
    return options;
}

bool isShown(JudgedEvent const& judged, Options const& options) {
    return !options.onlyFindings || !judged.findings.empty();
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
        forEachJudged(ofOlder(optionsM, *olderFileM),
                      [this](JudgedEvent const& judged) { olderRowsM.add(judged.event); });
    }

    void addEvents(Page& page) {
        // An event without findings isn't gone.
        auto all = optionsM;
        all.onlyFindings = optionsM.onlyFindings && !olderFileM;
        forEachJudged(all, [&](JudgedEvent const& judged) {
            if (olderFileM) {
                keysM.insert(keyOf(judged.event));
            }
            if (!isShown(judged, optionsM)) {
                return;
            }
            auto shown = shownEvent(judged, judged.fileNumber, PageChange::none);
            if (olderFileM) {
                olderRowsM.compare(shown);
            }
            page.add(shown);
        });
    }

    // Events of the older file that none of the others has.
    void addGone(Page& page) {
        forEachJudged(ofOlder(optionsM, *olderFileM), [&](JudgedEvent const& judged) {
            if (keysM.find(keyOf(judged.event)) == keysM.end() && isShown(judged, optionsM)) {
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
    std::unordered_set<std::uint64_t> keysM;
};

} // namespace

int writePage(Options const& options) {
    PageWriter(options).write();
    return 0;
}

} // namespace reader
