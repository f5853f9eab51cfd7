#include "findings/Judgement.h"

#include "facts/Times.h"
#include "findings/Judge.h"

#include <fmt/format.h>

namespace reader {

namespace {

constexpr std::string_view openEnd = "open";

} // namespace

Judgement::Judgement(EventFacts const& judged, std::vector<Finding>& findings)
    : event(judged), findingsM(findings) {
    if (auto const seconds = chargingSeconds(event.chargingStart.text)) {
        startM = isoTime(*seconds);
    }
}

std::string Judgement::startText() const {
    return fmt::format("charging start {} ({})", startM, event.chargingStart.text);
}

void Judgement::add(Kind kind, LineNumber line, std::string subject, std::string says,
                    std::string holds, std::string relation) {
    findingsM.push_back(
        {kind, line, std::move(subject), std::move(says), std::move(holds), std::move(relation)});
}

bool Judgement::isOutside(std::string_view from, std::string_view to) const {
    return !startM.empty() &&
           ((isIsoTime(from) && startM < from) || (to != openEnd && isIsoTime(to) && startM >= to));
}

std::string Judgement::outside(std::string_view from, std::string_view to) const {
    if (!isOutside(from, to)) {
        return {};
    }
    if (isIsoTime(from) && startM < from) {
        return "begins " + distance(startM, from) + " after the charging start";
    }
    return startM == to ? "ended at the charging start"
                        : "ended " + distance(to, startM) + " before the charging start";
}

bool Judgement::knowsEntries() const {
    auto const* const entries = event.planMemory.entries;
    return entries != nullptr && entries->isComplete;
}

bool Judgement::hasSeveralPlans() const {
    auto const& codes = event.priceModels;
    auto const* const entries = event.planMemory.entries;
    return knowsEntries() && codes.size() > 1 && isAmongEntries(*entries, codes.back().text) &&
           std::any_of(codes.begin(), codes.end() - 1,
                       [&](Fact const& code) { return !isAmongEntries(*entries, code.text); });
}

bool Judgement::isPlanOfProduct() const {
    auto const* const products = event.accountMemory.products.table;
    return products != nullptr && hasCell(*products, "Rate plan", event.ratePlan.text);
}

std::string validityText(std::string_view from, std::string_view to) {
    return fmt::format("from {} to {}", from, to);
}

bool hasCell(Table const& table, std::string_view heading, std::string_view text) {
    auto const column = table.column(heading);
    for (std::size_t row = 0; column != Table::none && row < table.rowCount; ++row) {
        if (table.cell(row, column) == text) {
            return true;
        }
    }
    return false;
}

bool isAmongEntries(Table const& entries, std::string_view priceModel) {
    return hasCell(entries, "Price model", priceModel);
}

void judge(EventFacts const& event, std::vector<Finding>& findings) {
    Judgement judgement(event, findings);
    for (auto* const judgeSection : {judgeHead, judgeAccount, judgeRatePlan, judgePriceModels,
                                     judgeBalances, judgeDiscounts}) {
        judgeSection(judgement);
    }
}

} // namespace reader
