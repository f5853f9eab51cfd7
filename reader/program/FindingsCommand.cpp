#include "program/FindingsCommand.h"

#include "program/EventJudge.h"
#include "program/Program.h"
#include "program/Terminal.h"
#include "text/Output.h"

namespace reader {

namespace {

// Of the severities, in their order.
constexpr std::string_view colours[] = {"36", "33", "1;31"};

std::string lineOf(Finding const& finding, EventFacts const& event, std::string const& file,
                   Terminal const& terminal) {
    auto const& kind = about(finding.kind);
    auto const severity = static_cast<std::size_t>(kind.severity);
    return fmt::format("{}:{}: {} {}: {} {}: {}\n", printable(file), finding.line,
                       terminal.coloured(severityNames[severity], colours[severity]),
                       terminal.coloured(kind.name, "1"), printable(event.customer.text),
                       printable(event.service.text), printable(sentenceOf(finding)));
}

} // namespace

int listFindings(Options const& options) {
    Output out;
    auto const terminal = Terminal::ofOutput();
    bool hasMismatch = false;
    forEachJudged(options, [&](JudgedEvent const& judged) {
        for (auto const& finding : judged.findings) {
            hasMismatch |= about(finding.kind).severity == Severity::mismatch;
            out.write(lineOf(finding, judged.event, judged.file, terminal));
        }
    });
    out.flush();
    return hasMismatch ? foundOrDifferent : done;
}

int explainKind(std::string const& name) {
    Output out;
    for (auto const& kind : findingKinds) {
        if (name == "all" || kind.name == name) {
            out.print("{} ({}): {}\n", kind.name, nameOf(kind.severity), kind.sentence);
        }
    }
    out.flush();
    return done;
}

} // namespace reader
