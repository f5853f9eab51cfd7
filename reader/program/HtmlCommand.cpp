#include "program/HtmlCommand.h"

#include "page/Page.h"
#include "program/EventJudge.h"
#include "program/KeyChoice.h"

#include <optional>
#include <unordered_map>
#include <unordered_set>

namespace reader {

namespace {

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
    explicit PageWriter(Options const& options)
        : newerM(options), hasOnlyFindingsM(options.onlyFindings) {
        if (!options.older.empty()) {
            chooseInBoth();
        }
    }

    void write() {
        auto files = newerM.files;
        if (olderM) {
            files.push_back(newerM.older);
            forEachJudged(*olderM,
                          [this](JudgedEvent const& judged) { olderRowsM.add(judged.event); });
        }
        Page page(files, pageKinds(), olderM.has_value());
        addEvents(page);
        if (olderM) {
            addGone(page);
        }
        page.write(newerM.page);
    }

private:
    // Which events have findings is asked later: one that has none isn't gone.
    void chooseInBoth() {
        filesM.emplace_back(newerM.older);
        if (!newerM.filter.letsAllThrough()) {
            for (auto const& name : newerM.files) {
                newerM.paths.push_back(filesM.emplace_back(name).path());
            }
        }
        newerM.filter = chosenInAny(newerM.filter, filesM);
        newerM.onlyFindings = false;
        auto& older = olderM.emplace(newerM);
        older.files = {filesM.front().name()};
        older.paths = {filesM.front().path()};
    }

    bool isShown(JudgedEvent const& judged) const {
        return !hasOnlyFindingsM || !judged.findings.empty();
    }

    void addEvents(Page& page) {
        forEachJudged(newerM, [&](JudgedEvent const& judged) {
            if (olderM) {
                keysM.insert(keyOf(judged.event));
            }
            if (isShown(judged)) {
                auto shown = shownEvent(judged, judged.fileNumber, PageChange::none);
                if (olderM) {
                    olderRowsM.compare(shown);
                }
                page.add(shown);
            }
        });
    }

    // Events of the older file that none of the others has.
    void addGone(Page& page) {
        forEachJudged(
            *olderM,
            [&](JudgedEvent const& judged) {
                if (!keysM.contains(keyOf(judged.event)) && isShown(judged)) {
                    page.add(shownEvent(judged, newerM.files.size(), PageChange::gone));
                }
            },
            Walk::Notices::quiet);
    }

    static PageEvent shownEvent(JudgedEvent const& judged, std::size_t file, PageChange change) {
        return {judged.event, file, pageRows(judged.event), pageFindings(judged.findings),
                change,       {}};
    }

    std::vector<RereadableFile> filesM; // the older one; with a filter the newer ones too
    Options newerM;
    std::optional<Options> olderM;
    bool hasOnlyFindingsM;
    OlderRows olderRowsM;
    std::unordered_set<std::uint64_t> keysM; // of the newer files
};

} // namespace

int writePage(Options const& options) {
    PageWriter(options).write();
    return 0;
}

} // namespace reader
