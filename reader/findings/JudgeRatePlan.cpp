// The rate plan and which of its entries led to the price models.
#include "findings/Judgement.h"

#include <fmt/format.h>

namespace reader {

namespace {

// Where the price module's text was cut, a model that isn't shown may be absent.
bool mayBeAbsent(EventFacts const& event, std::string_view code) {
    auto const& shown = event.priceModelMemory;
    auto const found = std::find_if(shown.begin(), shown.end(), [&](ShownObject const& model) {
        return model.object->name == code;
    });
    return found == shown.end() ? event.cutLine != 0 : found->object->isAbsent;
}

std::string entryModels(Table const& entries) {
    std::string models;
    for (std::size_t row = 0; row < entries.rowCount; ++row) {
        models += fmt::format("{}{}", row > 0 ? ", " : "", entries.cell(row, "Price model"));
    }
    return models.empty() ? "no matching entry" : "matching entries for " + models;
}

// Entries before the one of the last price model that were not charged.
void judgePassedOver(Judgement& judgement, Table const& entries) {
    auto const& codes = judgement.event.priceModels;
    auto const models = entries.column("Price model");
    auto const isUsed = [&](std::string_view model) {
        return std::any_of(codes.begin(), codes.end(),
                           [&](Fact const& code) { return code.text == model; });
    };
    for (std::size_t row = 0; row < entries.rowCount; ++row) {
        auto const model = entries.cell(row, models);
        if (model == codes.back().text) {
            return;
        }
        if (!isUsed(model)) {
            judgement.add(Kind::entryPassedOver,
                          judgement.event.planMemory.linesBefore + entries.lineOf(row),
                          fmt::format("entry {} of rate plan {}", entries.cell(row, "Entry"),
                                      judgement.event.ratePlan.text),
                          fmt::format("charged by {}", codes.back().text),
                          fmt::format("price model {} before it", model));
        }
    }
}

void judgeEntries(Judgement& judgement, Table const& entries) {
    auto const& event = judgement.event;
    auto const& used = event.priceModels.back();
    if (isAmongEntries(entries, used.text)) {
        judgePassedOver(judgement, entries);
        if (judgement.hasSeveralPlans() && judgement.isPlanOfProduct()) {
            judgement.add(
                Kind::severalPlans, event.ratePlan.line, "price models",
                std::string(event.codes.text.substr(0, event.codes.text.find_last_not_of(' ') + 1)),
                entryModels(entries));
        }
    } else if (entries.isComplete && !mayBeAbsent(event, used.text)) {
        judgement.add(Kind::priceModelNotOfEntry, event.planMemory.serviceCode.line,
                      fmt::format("price model {}", used.text),
                      fmt::format("used last, with rate plan {}", event.ratePlan.text),
                      entryModels(entries));
    }
}

} // namespace

void judgeRatePlan(Judgement& judgement) {
    auto const& event = judgement.event;
    auto const& memory = event.planMemory;
    if (event.priceModels.empty()) {
        return;
    }
    auto const subject = [&] {
        return fmt::format("rate plan {} version {}", event.ratePlan.text,
                           event.ratePlanVersion.text);
    };
    if (memory.isAbsent) {
        judgement.add(Kind::ratePlanAbsent, memory.code.line, subject(), "used", "not in memory");
        return;
    }
    if (memory.id.isTold() && !event.ratePlanId.text.empty() &&
        memory.id.text != event.ratePlanId.text) {
        judgement.add(Kind::ratePlanIdDiffers, memory.id.line, subject(),
                      fmt::format("rate plan id {}", event.ratePlanId.text),
                      fmt::format("rate plan id {}", memory.id.text));
    }
    judgement.requireValid(Kind::ratePlanNotValid, memory.validFrom.line, subject,
                           memory.validFrom.text, memory.validTo.text);
    if (memory.entries != nullptr) {
        judgeEntries(judgement, *memory.entries);
    }
}

} // namespace reader
