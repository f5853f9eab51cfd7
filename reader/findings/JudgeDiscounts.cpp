// The discounts and sponsorships that were used: the account's own, and those of owners who share.
#include "findings/Judgement.h"

#include <fmt/format.h>

namespace reader {

namespace {

// Whose the items are, as the event says.
struct ItemOwner {
    std::string_view account;
    std::string_view id; // of shared items only
};

struct ObjectRow {
    Table const* table = nullptr;
    std::size_t row = 0;
    bool isSponsorship = false;
};

// A discount and a sponsorship may have the same number: the one with the item's model is meant.
ObjectRow findObject(HeldMemory const& memory, UsedItem const& item) {
    ObjectRow found;
    for (auto const* const list : {&memory.discounts, &memory.sponsorships}) {
        auto const* const table = list->table;
        if (table == nullptr) {
            continue;
        }
        auto const numbers = table->column("Object");
        for (std::size_t row = 0; row < table->rowCount; ++row) {
            if (table->cell(row, numbers) != item.object.text) {
                continue;
            }
            bool const isOfModel = table->cell(row, "Model") == item.model.text;
            if (isOfModel || found.table == nullptr) {
                found = {table, row, list == &memory.sponsorships};
            }
            if (isOfModel) {
                return found;
            }
        }
    }
    return found;
}

void judgeObject(Judgement& judgement, ObjectRow const& object, UsedItem const& item,
                 ItemOwner const& owner) {
    auto const& table = *object.table;
    auto const line = table.lineOf(object.row);
    auto const value = [&](std::string_view heading) { return table.cell(object.row, heading); };
    auto const subject = [&] {
        return fmt::format("{} {}", object.isSponsorship ? "sponsorship" : "discount",
                           item.object.text);
    };
    struct Comparison {
        Kind kind;
        std::string_view heading;
        std::string_view noun;
        std::string_view said;
        bool isMade;
    };
    Comparison const comparisons[] = {
        {Kind::objectModelDiffers, "Model", "model", item.model.text, item.model.isTold()},
        {Kind::objectAccountDiffers, "Account", "account", owner.account, true},
        {Kind::objectOwnerDiffers, "Owner", "owner", owner.id, !owner.id.empty()},
    };
    for (auto const& comparison : comparisons) {
        bool const hasColumn = table.column(comparison.heading) != Table::none;
        if (comparison.isMade && hasColumn && value(comparison.heading) != comparison.said) {
            judgement.add(comparison.kind, line, subject(),
                          fmt::format("{} {}", comparison.noun, comparison.said),
                          fmt::format("{} {}", comparison.noun, value(comparison.heading)));
        }
    }
    judgement.requireValid(Kind::objectNotValid, line, subject, value("Valid from"),
                           value("Valid to"));
    judgement.requireActive(Kind::objectInactive, line, subject, value("Status"));
    auto const purchased = value("Purchased");
    if (judgement.isOutside(purchased, "open")) {
        judgement.add(Kind::objectPurchasedLater, line, subject(), judgement.startText(),
                      fmt::format("purchased {}", purchased),
                      "purchased" + judgement.outside(purchased, "open").substr(6));
    }
}

void judgeAbsentObjects(Judgement& judgement, HeldMemory const& memory) {
    struct AbsentList {
        ObjectList const& list;
        Kind kind;
        std::string_view noun;
    };
    for (auto const& absent :
         {AbsentList{memory.discounts, Kind::discountAbsent, "discount"},
          AbsentList{memory.sponsorships, Kind::sponsorshipAbsent, "sponsorship"}}) {
        for (auto const& number : absent.list.absent) {
            if (!isRepeated(absent.list.absent, number)) {
                judgement.add(absent.kind, number.line,
                              fmt::format("{} {}", absent.noun, number.text), "used",
                              "not in memory");
            }
        }
    }
}

bool hasRuleFor(Table const& rules, std::string_view category) {
    auto const column = rules.column("Impact category");
    for (std::size_t row = 0; row < rules.rowCount; ++row) {
        auto const covered = rules.cell(row, column);
        if (covered == category || covered == "*") {
            return true;
        }
    }
    return false;
}

void judgeModels(Judgement& judgement, std::vector<ShownObject> const& models) {
    auto const category = judgement.event.impactCategory.text;
    for (auto const& model : models) {
        auto const& object = *model.object;
        if (isRepeated(models, model)) {
            continue;
        }
        if (object.isAbsent) {
            judgement.add(Kind::discountModelAbsent, model.line,
                          fmt::format("discount model {}", object.name), "used", "not in memory");
            continue;
        }
        auto const* const rules = object.table("Rules");
        bool const isAsked = !category.empty() && category != "*";
        if (rules != nullptr && rules->isComplete && isAsked && !hasRuleFor(*rules, category)) {
            judgement.add(Kind::noRuleForCategory, model.line + rules->line,
                          fmt::format("discount model {}", object.name),
                          fmt::format("impact category {}", category),
                          fmt::format("{} rules, none for it", rules->rowCount));
        }
    }
}

void judgeItems(Judgement& judgement, std::vector<UsedItem> const& items, HeldMemory const& memory,
                ItemOwner const& owner) {
    for (auto const& item : items) {
        auto const object = findObject(memory, item);
        if (object.table != nullptr && !isRepeated(items, item)) {
            judgeObject(judgement, object, item, owner);
        }
    }
    judgeAbsentObjects(judgement, memory);
    judgeModels(judgement, memory.discountModels);
}

} // namespace

void judgeDiscounts(Judgement& judgement) {
    auto const& event = judgement.event;
    judgeItems(judgement, event.ownDiscounts, event.memory, {event.account.text, {}});
    for (auto const& owner : event.owners) {
        judgeItems(judgement, owner.items, owner.memory, {owner.account.text, owner.id.text});
    }
}

} // namespace reader
