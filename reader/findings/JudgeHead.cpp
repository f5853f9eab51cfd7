// What the event says by itself, and whether its text is whole.
#include "facts/Times.h"
#include "findings/Judgement.h"

#include <fmt/format.h>

namespace reader {

namespace {

constexpr std::size_t longestQuote = 60;

std::string quoted(std::string_view text) {
    return text.size() <= longestQuote ? fmt::format("\"{}\"", text)
                                       : fmt::format("\"{}…\"", text.substr(0, longestQuote));
}

// Lines that follow each other are one finding.
void judgeUnplaced(Judgement& judgement) {
    auto const& unplaced = judgement.event.unplaced;
    for (std::size_t i = 0; i < unplaced.size();) {
        auto end = i + 1;
        while (end < unplaced.size() && unplaced[end].line == unplaced[end - 1].line + 1) {
            ++end;
        }
        judgement.add(Kind::unplaced, unplaced[i].line,
                      end - i == 1 ? std::string("a line") : fmt::format("{} lines", end - i),
                      quoted(unplaced[i].text), {}, unplaced[i].reason);
        i = end;
    }
}

void judgeSections(Judgement& judgement) {
    struct ModuleSection {
        SectionName name;
        std::string_view module;
    };
    constexpr ModuleSection moduleSections[] = {
        {SectionName::account, "account"},         {SectionName::ratePlan, "rate plan"},
        {SectionName::priceModels, "price model"}, {SectionName::balances, "balance"},
        {SectionName::ownDiscounts, "discount"},
    };
    for (auto const& section : moduleSections) {
        auto const* const text = judgement.event.section(section.name);
        if (text == nullptr || text->text.find_first_not_of(" \n") == std::string_view::npos) {
            judgement.add(Kind::sectionMissing, text == nullptr ? judgement.event.line : text->line,
                          fmt::format("{} data", section.module), {}, "nothing");
        }
    }
}

} // namespace

void judgeHead(Judgement& judgement) {
    auto const& event = judgement.event;
    if (event.cutLine != 0) {
        judgement.add(Kind::cutShort, event.cutLine, "the event's text", {}, {},
                      fmt::format("it ends at line {}, which is not judged", event.cutLine));
    }
    judgeUnplaced(judgement);
    if (event.customer.isTold() && event.customer.text.empty()) {
        judgement.add(Kind::emptyIdentifier, event.customer.line, "customer identifier", "empty",
                      {});
    }
    if (event.serviceId.text == "0") {
        judgement.add(Kind::noService, event.serviceId.line, "service", "service 0", {});
    }
    if (event.chargingStart.isTold() && judgement.start().empty()) {
        judgement.add(Kind::noChargingStart, event.chargingStart.line, "charging start",
                      std::string(event.chargingStart.text), {});
    }
    bool const hasCodes = !event.codes.text.empty();
    if (event.ratePlan.isTold() && event.codes.isTold() && !hasCodes) {
        if (event.ratePlan.text.empty()) {
            judgement.add(Kind::noChargePacket, event.ratePlan.line, "rate plan",
                          "neither rate plan nor price models", {});
        } else {
            judgement.add(Kind::ratePlanLeft, event.ratePlan.line,
                          fmt::format("rate plan {}", event.ratePlan.text), "no price models", {});
        }
    }
    if (event.kind == TextKind::dump && event.hasRecord && event.cutLine == 0) {
        judgeSections(judgement);
    }
}

} // namespace reader
