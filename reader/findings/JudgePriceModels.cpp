// The price models that were used, and the balances that they change.
#include "facts/Amount.h"
#include "findings/Judgement.h"

#include <fmt/format.h>

namespace reader {

namespace {

struct ValidSteps {
    Table const& table;
    std::vector<std::size_t> rows;
};

ValidSteps validSteps(Judgement const& judgement, Table const& steps) {
    ValidSteps valid{steps, {}};
    auto const from = steps.column("Valid from");
    auto const to = steps.column("Valid to");
    for (std::size_t row = 0; row < steps.rowCount; ++row) {
        if (!judgement.isOutside(steps.cell(row, from), steps.cell(row, to))) {
            valid.rows.push_back(row);
        }
    }
    return valid;
}

// Whether a step ends after where another does.
bool goesFurther(std::string_view end, std::string_view other) {
    auto const order = compareAmounts(end, other);
    return other != "open" && (end == "open" || (order && std::is_gt(*order)));
}

// Steps of one unit, in the order of where they begin, each compared with where those before it
// end.
void judgeThresholds(Judgement& judgement, ShownObject const& model, ValidSteps steps) {
    auto const& table = steps.table;
    auto const from = table.column("From");
    auto const below = table.column("Below");
    auto const unit = table.column("Unit");
    std::stable_sort(steps.rows.begin(), steps.rows.end(), [&](std::size_t a, std::size_t b) {
        if (table.cell(a, unit) != table.cell(b, unit)) {
            return table.cell(a, unit) < table.cell(b, unit);
        }
        auto const order = compareAmounts(table.cell(a, from), table.cell(b, from));
        return order && std::is_lt(*order);
    });
    auto row = steps.rows.front(); // that goes furthest
    for (auto const next : steps.rows) {
        if (next == row) {
            continue;
        }
        if (table.cell(row, unit) != table.cell(next, unit)) {
            row = next;
            continue;
        }
        auto const end = table.cell(row, below);
        auto const begin = table.cell(next, from);
        auto const order = compareAmounts(begin, end);
        bool const isOverlap = end == "open" || (order && std::is_lt(*order));
        if (isOverlap || (order && std::is_gt(*order))) {
            judgement.add(
                isOverlap ? Kind::priceOverlap : Kind::priceGap, model.lineOf(table, next),
                fmt::format("price model {}", model.object->name), {},
                fmt::format("step {} below {}, step {} from {} {}", table.cell(row, "Step"), end,
                            table.cell(next, "Step"), begin, table.cell(next, unit)));
        }
        row = goesFurther(table.cell(next, below), end) ? next : row;
    }
}

void judgeSteps(Judgement& judgement, ShownObject const& model, Table const& steps) {
    auto const subject = [&] { return fmt::format("price model {}", model.object->name); };
    if (steps.rowCount == 0 && !steps.isComplete) {
        return;
    }
    if (steps.rowCount == 0) {
        judgement.add(Kind::priceModelWithoutSteps, model.line + steps.line, subject(), "used",
                      "no steps");
        return;
    }
    if (judgement.start().empty()) {
        return;
    }
    auto const valid = validSteps(judgement, steps);
    if (valid.rows.empty() && steps.isComplete) {
        auto const row = steps.rowCount - 1;
        auto const from = steps.cell(row, "Valid from");
        auto const to = steps.cell(row, "Valid to");
        judgement.add(
            Kind::priceNotValid, model.lineOf(steps, row), subject(), judgement.startText(),
            fmt::format("step {} valid {}", steps.cell(row, "Step"), validityText(from, to)),
            judgement.outside(from, to));
    } else if (valid.rows.size() > 1) {
        judgeThresholds(judgement, model, valid);
    }
}

// The balances of the event's own group; null when they aren't known.
Table const* balancesOf(EventFacts const& event) {
    for (auto const& group : event.memory.balanceGroups) {
        if (group.object->name == event.balanceGroup.text) {
            auto const* const balances = group.object->table("Balances");
            return balances != nullptr && balances->isComplete ? balances : nullptr;
        }
    }
    return nullptr;
}

bool hasResource(Table const& balances, std::string_view resource) {
    auto const column = balances.column("Resource");
    for (std::size_t row = 0; row < balances.rowCount; ++row) {
        if (balances.cell(row, column) == resource) {
            return true;
        }
    }
    return false;
}

bool isStepValid(Judgement const& judgement, Table const& steps, std::string_view number) {
    for (std::size_t row = 0; row < steps.rowCount; ++row) {
        if (steps.cell(row, "Step") == number) {
            return !judgement.isOutside(steps.cell(row, "Valid from"), steps.cell(row, "Valid to"));
        }
    }
    return true;
}

void judgeImpacts(Judgement& judgement, ShownObject const& model, Table const& steps,
                  Table const& balances) {
    auto const* const impacts = model.object->table("Balance impacts");
    if (impacts == nullptr) {
        return;
    }
    auto const resource = impacts->column("Resource");
    for (std::size_t row = 0; row < impacts->rowCount; ++row) {
        if (!hasResource(balances, impacts->cell(row, resource)) &&
            isStepValid(judgement, steps, impacts->cell(row, "Step"))) {
            judgement.add(Kind::noBalanceForImpact, model.lineOf(*impacts, row),
                          fmt::format("price model {} step {}", model.object->name,
                                      impacts->cell(row, "Step")),
                          fmt::format("balance group {}", judgement.event.balanceGroup.text),
                          fmt::format("an impact on {}, of which the group has no balance",
                                      impacts->cell(row, resource)));
        }
    }
}

} // namespace

void judgePriceModels(Judgement& judgement) {
    auto const& event = judgement.event;
    auto const& shown = event.priceModelMemory;
    auto const* const balances = balancesOf(event);
    // Whether all models change the event's own balances, and by which steps.
    bool const areImpactsKnown = balances != nullptr && !judgement.start().empty() &&
                                 (event.priceModels.size() <= 1 ||
                                  (judgement.knowsEntries() && !judgement.hasSeveralPlans()));
    for (auto const& model : shown) {
        if (isRepeated(shown, model)) {
            continue;
        }
        if (model.object->isAbsent) {
            judgement.add(Kind::priceModelAbsent, model.line,
                          fmt::format("price model {}", model.object->name), "used",
                          "not in memory");
            continue;
        }
        if (auto const* const steps = model.object->table("Steps")) {
            judgeSteps(judgement, model, *steps);
            if (areImpactsKnown) {
                judgeImpacts(judgement, model, *steps, *balances);
            }
        }
    }
}

} // namespace reader
