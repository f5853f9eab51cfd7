// The customer, the account and what it owns.
#include "findings/Judgement.h"

#include <fmt/format.h>

namespace reader {

namespace {

bool judgeService(Judgement& judgement) {
    auto const& event = judgement.event;
    auto const* const services = event.accountMemory.services;
    if (services == nullptr) {
        return true;
    }
    if (services->markedRow == Table::none) {
        if (services->isComplete) {
            judgement.add(Kind::serviceAbsent, services->line,
                          fmt::format("service {}", event.serviceId.text),
                          fmt::format("service {}", event.serviceId.text),
                          fmt::format("{} other services", services->rowCount));
        }
        return false;
    }
    auto const row = services->markedRow;
    auto const line = services->lineOf(row);
    auto const type = services->cell(row, "Type");
    auto const subject = [&] { return fmt::format("service {}", event.serviceId.text); };
    if (type != event.serviceType.text) {
        judgement.add(Kind::serviceTypeDiffers, line, subject(),
                      fmt::format("type {}", event.serviceType.text), fmt::format("type {}", type));
    }
    judgement.requireActive(Kind::serviceInactive, line, subject, services->cell(row, "Status"));
    return true;
}

// What is found of the products that have the rate plan of the event.
struct PlanProducts {
    std::size_t named = 0;
    std::size_t valid = 0;
    std::size_t active = 0;
    std::size_t lastNamed = 0;
    std::size_t lastValid = 0;
};

PlanProducts countProducts(Judgement const& judgement, Table const& products) {
    PlanProducts counted;
    auto const plans = products.column("Rate plan");
    auto const from = products.column("Valid from");
    auto const to = products.column("Valid to");
    for (std::size_t row = 0; row < products.rowCount; ++row) {
        if (products.cell(row, plans) != judgement.event.ratePlan.text) {
            continue;
        }
        ++counted.named;
        counted.lastNamed = row;
        if (!judgement.isOutside(products.cell(row, from), products.cell(row, to))) {
            ++counted.valid;
            counted.lastValid = row;
            counted.active += products.cell(row, "Status") == activeStatus ? 1 : 0;
        }
    }
    return counted;
}

bool areAllAmongEntries(EventFacts const& event) {
    auto const* const entries = event.planMemory.entries;
    return entries != nullptr && entries->isComplete &&
           std::all_of(event.priceModels.begin(), event.priceModels.end(),
                       [&](Fact const& code) { return isAmongEntries(*entries, code.text); });
}

void judgeProducts(Judgement& judgement) {
    auto const& event = judgement.event;
    auto const* const products = event.accountMemory.products.table;
    if (products == nullptr || !products->isComplete || event.priceModels.empty()) {
        return;
    }
    auto const counted = countProducts(judgement, *products);
    auto const row = counted.valid == 0 ? counted.lastNamed : counted.lastValid;
    auto const subject = [&] {
        return fmt::format("product {} of rate plan {}", products->cell(row, "Product"),
                           event.ratePlan.text);
    };
    if (counted.named == 0) {
        if (areAllAmongEntries(event)) {
            auto const says = fmt::format("rate plan {}", event.ratePlan.text);
            std::string plans;
            for (std::size_t i = 0; i < products->rowCount; ++i) {
                plans += fmt::format("{}{}", i > 0 ? ", " : "", products->cell(i, "Rate plan"));
            }
            judgement.add(Kind::planNotOfProduct, event.accountMemory.products.service.line, says,
                          says, "products of " + (plans.empty() ? "no rate plan" : plans));
        }
    } else if (counted.valid == 0) {
        judgement.requireValid(Kind::productNotValid, products->lineOf(row), subject,
                               products->cell(row, "Valid from"), products->cell(row, "Valid to"));
    } else if (counted.active == 0) {
        judgement.requireActive(Kind::productInactive, products->lineOf(row), subject,
                                products->cell(row, "Status"));
    }
}

// Whether "5011 CORP_DATA20, 5012 OTHER" lists the number.
bool listsNumber(std::string_view others, std::string_view number) {
    while (!others.empty()) {
        auto const end = others.find(", ");
        auto const one = others.substr(0, end);
        if (one.substr(0, one.find(' ')) == number) {
            return true;
        }
        others.remove_prefix(end == std::string_view::npos ? others.size() : end + 2);
    }
    return false;
}

void judgeUnlisted(Judgement& judgement, UsedItem const& item) {
    auto const& list = judgement.event.accountMemory.discounts;
    auto const subject = fmt::format("discount {} {}", item.object.text, item.model.text);
    if (listsNumber(list.others.text, item.object.text)) {
        judgement.add(Kind::ownDiscountNotApplying, list.others.line, subject,
                      fmt::format("used for service {} and event type {}", list.service.text,
                                  list.eventType.text),
                      "not for this service and event type");
    } else if (list.others.isTold() || list.found.text == list.owned.text) {
        judgement.add(Kind::discountNotListed, list.service.line, subject, "the account's own",
                      fmt::format("not among its {} discounts", list.owned.text));
    }
}

void judgeOwnDiscounts(Judgement& judgement) {
    auto const& list = judgement.event.accountMemory.discounts;
    if (list.table == nullptr || !list.table->isComplete) {
        return;
    }
    auto const& table = *list.table;
    auto const numbers = table.column("Discount");
    auto const& items = judgement.event.ownDiscounts;
    for (auto const& item : items) {
        if (isRepeated(items, item)) {
            continue;
        }
        std::size_t row = 0;
        while (row < table.rowCount && table.cell(row, numbers) != item.object.text) {
            ++row;
        }
        if (row == table.rowCount) {
            judgeUnlisted(judgement, item);
            continue;
        }
        auto const line = table.lineOf(row);
        auto const subject = [&] { return fmt::format("own discount {}", item.object.text); };
        auto const model = table.cell(row, "Discount model");
        if (item.model.isTold() && model != item.model.text) {
            judgement.add(Kind::ownDiscountModelDiffers, line, subject(),
                          fmt::format("model {}", item.model.text), fmt::format("model {}", model));
        }
        judgement.requireValid(Kind::ownDiscountNotValid, line, subject,
                               table.cell(row, "Valid from"), table.cell(row, "Valid to"));
        judgement.requireActive(Kind::ownDiscountInactive, line, subject,
                                table.cell(row, "Status"));
    }
}

} // namespace

void judgeAccount(Judgement& judgement) {
    auto const& event = judgement.event;
    auto const& memory = event.accountMemory;
    if (memory.isCustomerAbsent) {
        if (!event.customer.text.empty()) {
            judgement.add(Kind::customerAbsent, memory.customer.line,
                          fmt::format("customer {}", event.customer.text),
                          fmt::format("account {}", event.account.text), "not in memory");
        }
        return;
    }
    if (!memory.id.isTold()) {
        return;
    }
    if (memory.id.text != event.account.text) {
        judgement.add(Kind::accountDiffers, memory.id.line,
                      fmt::format("customer {}", event.customer.text),
                      fmt::format("account {}", event.account.text),
                      fmt::format("account {}", memory.id.text));
        return;
    }
    judgement.requireActive(
        Kind::accountInactive, memory.status.line,
        [&] { return fmt::format("account {}", memory.id.text); }, memory.status.text);
    if (event.serviceId.text != "0" && judgeService(judgement)) {
        judgeProducts(judgement);
        judgeOwnDiscounts(judgement);
    }
}

} // namespace reader
