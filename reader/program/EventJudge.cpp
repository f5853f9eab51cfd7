#include "program/EventJudge.h"

#include "findings/FileComparison.h"
#include "program/Walk.h"

namespace reader {

namespace {

void leaveOut(std::vector<Finding>& findings, Options const& options) {
    std::erase_if(findings, [&](Finding const& finding) {
        return options.isIgnored[static_cast<std::size_t>(finding.kind)] ||
               about(finding.kind).severity < options.leastSeverity;
    });
}

// Text that no event has is a finding of the file.
void judgeOutside(EventText const& text, std::vector<Finding>& findings) {
    auto const begin = text.text.bytes().find_first_not_of('\n');
    if (begin != std::string_view::npos) {
        auto const place = text.text.placeOf(begin);
        auto const line = text.line + place.line;
        auto const first = text.text.restOfLine(place);
        findings.push_back({Kind::unplaced,
                            line,
                            "text before the first event",
                            "\"" + std::string(first.substr(0, 60)) + "\"",
                            {},
                            {}});
    }
}

} // namespace

void forEachJudged(Options const& options, std::function<void(JudgedEvent const&)> const& visit,
                   Walk::Notices notices) {
    Walk walk(options.files, options.paths);
    FactReader reader;
    KeyRegister keys;
    FileComparison comparison(walk.files());
    std::vector<Finding> findings;
    EventFacts const noEvent;
    bool const hasSeveralFiles = walk.files().size() > 1;
    walk.forEach(
        [&](EventText const& text, std::size_t file) {
            findings.clear();
            if (text.isOutside) {
                judgeOutside(text, findings);
                leaveOut(findings, options);
                if (!findings.empty() && options.filter.letsAllThrough()) {
                    visit({noEvent, findings, walk.files()[file], file});
                }
                return;
            }
            if (!options.filter.lets(text, reader)) {
                return;
            }
            auto const& event = reader.read(text);
            if (hasSeveralFiles) {
                keys.add(event.customer.text, event.service.text, text, file, walk.files());
                comparison.compare(event, text.offset, file, findings);
            }
            judge(event, findings);
            leaveOut(findings, options);
            if (!findings.empty() || !options.onlyFindings) {
                visit({event, findings, walk.files()[file], file});
            }
        },
        notices);
}

} // namespace reader
