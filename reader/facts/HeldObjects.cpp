#include "facts/HeldObjects.h"

#include "text/Hash.h"

namespace reader {

namespace {

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

// Appends words with blanks between them.
void appendWords(std::string& text, std::initializer_list<std::string_view> words) {
    for (auto const word : words) {
        text += text.empty() ? "" : " ";
        text += word;
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

std::uint64_t HeldObject::key() const {
    return hashOf(question, hashOf(id));
}

HeldObject& HeldObjectWalk::next(std::string_view noun, std::string_view name, LineNumber line) {
    objectM.id.clear();
    appendWords(objectM.id, {noun, name});
    objectM.question.clear();
    objectM.line = line;
    objectM.facts.clear();
    objectM.lists.clear();
    objectM.lines.clear();
    return objectM;
}

void HeldObjectWalk::visitObjects(std::vector<ShownObject> const& objects, std::string_view noun,
                                  std::string_view aboutName, Visitor const& visit) {
    for (auto const& shown : objects) {
        auto& object = next(noun, shown.object->name, shown.line);
        if (shown.object->isAbsent) {
            object.facts.push_back({inMemory, no});
        } else {
            object.facts.push_back({aboutName, shown.object->about});
            addTables(shown.object->content, object);
        }
        visit(object);
    }
}

// Each row is an object.
void HeldObjectWalk::visitList(ObjectList const& list, std::string_view noun,
                               Visitor const& visit) {
    auto const* const table = list.table;
    for (std::size_t row = 0; table != nullptr && row < table->rowCount; ++row) {
        auto& object = next(noun, table->cell(row, 0), table->lineOf(row));
        for (std::size_t column = 1; column < table->columnCount; ++column) {
            object.facts.push_back({table->heading(column), table->cell(row, column)});
        }
        visit(object);
    }
    for (auto const& number : list.absent) {
        next(noun, number.text, number.line).facts.push_back({inMemory, no});
        visit(objectM);
    }
}

void HeldObjectWalk::visitHeld(HeldMemory const& memory, Visitor const& visit) {
    visitObjects(memory.balanceGroups, "balance group", "account", visit);
    visitList(memory.discounts, "discount", visit);
    visitList(memory.sponsorships, "sponsorship", visit);
    visitObjects(memory.discountModels, "discount model", "description", visit);
}

void HeldObjectWalk::visitAskedList(AskedList const& list, std::string_view account,
                                    std::string_view noun, std::string_view othersName,
                                    Visitor const& visit) {
    if (list.table == nullptr) {
        return;
    }
    auto& object = next("account", account, list.service.line);
    object.question = noun;
    object.question += 's';
    appendWords(object.question,
                {"for service", list.service.text, "and event type", list.eventType.text});
    object.facts.push_back({othersName, list.others.text});
    object.lists.push_back({noun, 1, list.table});
    visit(object);
}

void HeldObjectWalk::visitAccount(AccountMemory const& memory, Visitor const& visit) {
    if (!memory.customer.isTold()) {
        return;
    }
    next("customer", memory.customer.text, memory.customer.line)
        .facts.push_back(memory.isCustomerAbsent ? HeldFact{inMemory, no}
                                                 : HeldFact{"account", memory.id.text});
    visit(objectM);
    if (!memory.id.isTold()) {
        return;
    }
    auto& account = next("account", memory.id.text, memory.id.line);
    account.facts.push_back({"status", memory.status.text});
    account.facts.push_back({"currency", memory.currency.text});
    account.facts.push_back({"parent", memory.parent.text});
    if (memory.services != nullptr) {
        account.lists.push_back({"service", 1, memory.services});
    }
    visit(account);
    visitAskedList(memory.products, memory.id.text, "product", "other products", visit);
    visitAskedList(memory.discounts, memory.id.text, "discount", "other discounts", visit);
}

void HeldObjectWalk::visitRatePlan(PlanMemory const& memory, Visitor const& visit) {
    if (!memory.code.isTold()) {
        return;
    }
    auto const nextPlan = [&](LineNumber line) -> HeldObject& {
        auto& plan = next("rate plan", memory.code.text, line);
        appendWords(plan.id, {"version", memory.version.text});
        return plan;
    };
    auto& plan = nextPlan(memory.code.line);
    if (memory.isAbsent) {
        plan.facts.push_back({inMemory, no});
    } else {
        plan.facts.push_back({"rate plan id", memory.id.text});
        plan.facts.push_back({"model", memory.model.text});
        plan.facts.push_back({"valid from", memory.validFrom.text});
        plan.facts.push_back({"valid to", memory.validTo.text});
    }
    visit(plan);
    if (memory.entries != nullptr) {
        auto& entries = nextPlan(memory.serviceCode.line);
        appendWords(entries.question, {"entries for service code", memory.serviceCode.text});
        entries.question += ',';
        appendWords(entries.question, {"service class", memory.serviceClass.text,
                                       "and impact category", memory.impactCategory.text});
        entries.lists.push_back({"entry", 1, memory.entries});
        visit(entries);
    }
}

// Facts of their event: whose objects they are isn't known.
void HeldObjectWalk::visitForeign(EventFacts const& event, Visitor const& visit) {
    for (auto const& foreign : event.foreignTexts) {
        auto const section = sectionNames[static_cast<std::size_t>(foreign.section)];
        auto& object = next(section, "text of", foreign.line);
        appendWords(object.id, {event.customer.text, event.service.text});
        if (!foreign.owner.empty()) {
            appendWords(object.id, {"and owner", foreign.owner});
        }
        TableLayouts layouts;
        ModuleText text;
        text.read(LineIndex(foreign.text), foreign.line, layouts);
        addTables(text, object);
        for (auto const& item : text.items()) {
            if (!item.table) {
                object.lines.push_back(item.text);
            }
        }
        visit(object);
    }
}

void HeldObjectWalk::forEach(EventFacts const& event, Visitor const& visit) {
    visitAccount(event.accountMemory, visit);
    visitRatePlan(event.planMemory, visit);
    visitObjects(event.priceModelMemory, "price model", "description", visit);
    visitHeld(event.memory, visit);
    for (auto const& owner : event.owners) {
        visitHeld(owner.memory, visit);
    }
    visitForeign(event, visit);
}

} // namespace reader
