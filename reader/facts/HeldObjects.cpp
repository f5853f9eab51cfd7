#include "facts/HeldObjects.h"

#include "text/Hash.h"

#include <fmt/format.h>

namespace reader {

namespace {

using Visitor = std::function<void(HeldObject const&)>;

struct KnownList {
    std::string_view title;
    std::string_view noun;
    std::size_t keyColumns;
};
constexpr KnownList knownLists[] = {
    {"Steps, amounts", "step", 1}, {"Balance impacts", "impact", 2},
    {"Balances", "balance", 1},    {"Sub-balances", "sub-balance", 2},
    {"Rules", "rule", 1},          {"Steps, thresholds", "step", 2},
};

constexpr std::string_view inMemory = "in memory";
constexpr std::string_view no = "no";

void addTables(ModuleText const& text, HeldObject& object) {
    for (auto const& table : text.tables()) {
        auto const title = table.title.substr(indentOf(table.title));
        HeldList list{title, 0, &table};
        for (auto const& known : knownLists) {
            if (title.starts_with(known.title)) {
                list = {known.noun, known.keyColumns, &table};
            }
        }
        object.lists.push_back(list);
        constexpr std::string_view currencyTitle = "Steps, amounts in ";
        if (title.starts_with(currencyTitle)) {
            object.facts.push_back({"currency", title.substr(currencyTitle.size())});
        }
    }
}

void visitObjects(std::vector<ShownObject> const& objects, std::string_view noun,
                  std::string_view aboutName, Visitor const& visit) {
    for (auto const& shown : objects) {
        HeldObject object;
        object.id = fmt::format("{} {}", noun, shown.object->name);
        object.line = shown.line;
        if (shown.object->isAbsent) {
            object.facts = {{inMemory, no}};
        } else {
            object.facts = {{aboutName, shown.object->about}};
            addTables(shown.object->content, object);
        }
        visit(object);
    }
}

// One object a row.
void visitRows(Table const* table, std::string_view noun, Visitor const& visit) {
    for (std::size_t row = 0; table != nullptr && row < table->rowCount; ++row) {
        HeldObject object;
        object.id = fmt::format("{} {}", noun, table->cell(row, 0));
        object.line = table->lineOf(row);
        for (std::size_t column = 1; column < table->columnCount; ++column) {
            object.facts.push_back({table->heading(column), table->cell(row, column)});
        }
        visit(object);
    }
}

void visitObjectList(ObjectList const& list, std::string_view noun, Visitor const& visit) {
    visitRows(list.table, noun, visit);
    for (auto const& number : list.absent) {
        HeldObject object;
        object.id = fmt::format("{} {}", noun, number.text);
        object.line = number.line;
        object.facts = {{inMemory, no}};
        visit(object);
    }
}

void visitHeld(HeldMemory const& memory, Visitor const& visit) {
    visitObjects(memory.balanceGroups, "balance group", "account", visit);
    visitObjectList(memory.discounts, "discount", visit);
    visitObjectList(memory.sponsorships, "sponsorship", visit);
    visitObjects(memory.discountModels, "discount model", "description", visit);
}

void visitAskedList(AskedList const& list, std::string const& account, std::string_view noun,
                    Visitor const& visit) {
    if (list.table == nullptr) {
        return;
    }
    HeldObject object;
    object.id = account;
    object.question = fmt::format("{}s for service {} and event type {}", noun, list.service.text,
                                  list.eventType.text);
    object.line = list.service.line;
    object.lists = {{noun, 1, list.table}};
    visit(object);
}

void visitAccount(EventFacts const& event, Visitor const& visit) {
    auto const& memory = event.accountMemory;
    if (!memory.customer.isTold()) {
        return;
    }
    HeldObject customer;
    customer.id = fmt::format("customer {}", memory.customer.text);
    customer.line = memory.customer.line;
    customer.facts = {memory.isCustomerAbsent ? HeldFact{inMemory, no}
                                              : HeldFact{"account", memory.id.text}};
    visit(customer);
    if (!memory.id.isTold()) {
        return;
    }
    HeldObject account;
    account.id = fmt::format("account {}", memory.id.text);
    account.line = memory.id.line;
    account.facts = {{"status", memory.status.text},
                     {"currency", memory.currency.text},
                     {"parent", memory.parent.text}};
    if (memory.services != nullptr) {
        account.lists = {{"service", 1, memory.services}};
    }
    visit(account);
    visitAskedList(memory.products, account.id, "product", visit);
    visitAskedList(memory.discounts, account.id, "discount", visit);
}

void visitRatePlan(PlanMemory const& memory, Visitor const& visit) {
    if (!memory.code.isTold()) {
        return;
    }
    HeldObject plan;
    plan.id = fmt::format("rate plan {} version {}", memory.code.text, memory.version.text);
    plan.line = memory.code.line;
    if (memory.isAbsent) {
        plan.facts = {{inMemory, no}};
    } else {
        plan.facts = {{"rate plan id", memory.id.text},
                      {"model", memory.model.text},
                      {"valid from", memory.validFrom.text},
                      {"valid to", memory.validTo.text}};
    }
    visit(plan);
    if (memory.entries != nullptr) {
        HeldObject entries;
        entries.id = plan.id;
        entries.question = fmt::format(
            "entries for service code {}, service class {} and impact category {}",
            memory.serviceCode.text, memory.serviceClass.text, memory.impactCategory.text);
        entries.line = memory.serviceCode.line;
        entries.lists = {{"entry", 1, memory.entries}};
        visit(entries);
    }
}

// The texts of other modules are facts of their event: whose objects they are isn't known.
void visitUnknown(EventFacts const& event, Visitor const& visit) {
    for (auto const& section : event.sections) {
        bool const isKnown =
            (section.name == SectionName::account && event.accountMemory.customer.isTold()) ||
            (section.name == SectionName::ratePlan && event.planMemory.code.isTold()) ||
            (section.name == SectionName::priceModels && event.priceModelsAsked.isTold()) ||
            section.text.find(" asked\n") != std::string_view::npos ||
            section.name == SectionName::ownDiscounts || section.name == SectionName::sharing;
        TableLayouts layouts;
        ModuleText text;
        if (isKnown || section.text.find_first_not_of(" \n") == std::string_view::npos) {
            continue;
        }
        text.read(LineIndex(section.text), section.line, layouts);
        HeldObject object;
        object.id =
            fmt::format("{} text of {} {}", sectionNames[static_cast<std::size_t>(section.name)],
                        event.customer.text, event.service.text);
        object.line = section.line;
        addTables(text, object);
        for (auto const& item : text.items()) {
            if (!item.table) {
                object.lines.push_back(item.text);
            }
        }
        visit(object);
    }
}

} // namespace

std::uint64_t HeldObject::hash() const {
    auto result = hashOf(question, hashOf(id));
    for (auto const& fact : facts) {
        result = hashOf(fact.value, hashOf(fact.name, result));
    }
    for (auto const& list : lists) {
        auto const& table = *list.table;
        result = mixed(hashOf(list.noun, result), table.rowCount);
        for (std::size_t column = 0; column < table.columnCount; ++column) {
            result = hashOf(table.heading(column), result);
            for (std::size_t row = 0; row < table.rowCount; ++row) {
                result = hashOf(table.cell(row, column), result);
            }
        }
    }
    for (auto const text : lines) {
        result = hashOf(text, result);
    }
    return result;
}

void forEachHeldObject(EventFacts const& event, Visitor const& visit) {
    visitAccount(event, visit);
    visitRatePlan(event.planMemory, visit);
    visitObjects(event.priceModelMemory, "price model", "description", visit);
    visitHeld(event.memory, visit);
    for (auto const& owner : event.owners) {
        visitHeld(owner.memory, visit);
    }
    visitUnknown(event, visit);
}

} // namespace reader
