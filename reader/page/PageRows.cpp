#include "page/PageRows.h"

#include <fmt/format.h>

#include <algorithm>

namespace reader {

namespace {

constexpr char const* notInMemory = "not in memory";

void append(std::string& text, std::string_view separator, std::string_view more) {
    if (!more.empty()) {
        text += text.empty() ? "" : separator;
        text += more;
    }
}

// Columns that a reader wouldn't understand without a word before or after them.
struct ColumnWords {
    std::string_view heading;
    std::string_view before;
    std::string_view after;
};
constexpr ColumnWords columnWords[] = {
    {"Step", "step ", ""},
    {"Impact", "impact ", ""},
    {"Sub-balance", "sub-balance ", ""},
    {"Rule", "rule ", ""},
    {"Entry", "entry ", ""},
    {"From", "from ", ""},
    {"Below", "below ", ""},
    {"Per", "per ", ""},
    {"Credit limit", "limit ", ""},
    {"Share %", "", " % off"},
    {"Valid from", "from ", ""},
    {"Valid to", "to ", ""},
    {"Purchased", "purchased ", ""},
    {"Owner", "owner ", ""},
    {"Account", "account ", ""},
};
// Columns that continue the one before them.
constexpr std::string_view continuations[] = {"Unit", "Valid to", "Below", "Per"};

// Midnight is left out: nearly all that is sold begins with a day.
std::string_view withoutMidnight(std::string_view cell) {
    constexpr std::string_view midnight = "T00:00:00Z";
    return cell.ends_with(midnight) ? cell.substr(0, cell.size() - midnight.size()) : cell;
}

std::string rowText(Table const& table, std::size_t row) {
    std::string text;
    for (std::size_t column = 0; column < table.columnCount; ++column) {
        auto const heading = table.heading(column);
        auto const words =
            std::find_if(std::begin(columnWords), std::end(columnWords),
                         [&](ColumnWords const& each) { return each.heading == heading; });
        bool const isContinued = std::find(std::begin(continuations), std::end(continuations),
                                           heading) != std::end(continuations);
        auto cell = std::string(withoutMidnight(table.cell(row, column)));
        if (words != std::end(columnWords) && !cell.empty()) {
            cell = fmt::format("{}{}{}", words->before, cell, words->after);
        }
        append(text, isContinued ? " " : ", ", cell);
    }
    return text;
}

// One line a row, each after the indentation.
std::string tableText(Table const* table, std::string_view indentation) {
    std::string text;
    for (std::size_t row = 0; table != nullptr && row < table->rowCount; ++row) {
        append(text, "\n", fmt::format("{}{}", indentation, rowText(*table, row)));
    }
    return text;
}

LineNumber firstLine(Table const* table) {
    return table == nullptr ? 0 : table->line;
}

class RowList {
public:
    explicit RowList(EventFacts const& event) : eventM(event) {}

    std::vector<PageRow> make() {
        addAccount();
        addRatePlan();
        addObjects("Price model", eventM.priceModels, eventM.priceModelMemory);
        addBalanceGroup(eventM.balanceGroup, eventM.memory);
        addItems("Own", eventM.ownDiscounts, eventM.memory);
        for (auto const& owner : eventM.owners) {
            addOwner(owner);
        }
        return std::move(rowsM);
    }

private:
    void add(std::string label, std::string said, LineNumber saidLine, std::string held,
             LineNumber heldLine) {
        if (saidLine != 0 || heldLine != 0) {
            rowsM.push_back(
                {std::move(label), std::move(said), std::move(held), saidLine, heldLine});
        }
    }

    void addAccount() {
        auto const& memory = eventM.accountMemory;
        add("Customer", std::string(eventM.customer.text), eventM.customer.line,
            memory.isCustomerAbsent ? notInMemory
            : memory.id.isTold()    ? fmt::format("account {}", memory.id.text)
                                    : std::string(),
            memory.customer.line);
        add("Account", std::string(eventM.account.text), eventM.account.line,
            memory.id.isTold()
                ? fmt::format("{}: {}, {}, parent {}", memory.id.text, memory.status.text,
                              memory.currency.text, memory.parent.text)
                : std::string(),
            memory.id.line);
        add("Service", fmt::format("{} {}", eventM.serviceId.text, eventM.serviceType.text),
            eventM.serviceId.line, serviceText(memory), firstLine(memory.services));
        addAskedList("Products", std::string(eventM.eventType.text), eventM.eventType.line,
                     memory.products);
        addAskedList("Discounts", {}, 0, memory.discounts);
    }

    static std::string serviceText(AccountMemory const& memory) {
        auto const* const services = memory.services;
        if (services == nullptr) {
            return {};
        }
        return services->markedRow == Table::none ? std::string(notInMemory)
                                                  : rowText(*services, services->markedRow);
    }

    void addAskedList(char const* label, std::string said, LineNumber saidLine,
                      AskedList const& list) {
        auto held = tableText(list.table, "");
        if (list.found.isTold()) {
            append(held, "\n", fmt::format("{} of {} apply", list.found.text, list.owned.text));
        }
        append(held, "\n", list.others.isTold() ? fmt::format("others: {}", list.others.text) : "");
        add(label, std::move(said), saidLine, std::move(held),
            list.found.isTold() ? list.found.line : firstLine(list.table));
    }

    void addRatePlan() {
        auto const& memory = eventM.planMemory;
        auto const said = eventM.ratePlan.text.empty()
                              ? std::string()
                              : fmt::format("{} version {}, id {}, {}", eventM.ratePlan.text,
                                            eventM.ratePlanVersion.text, eventM.ratePlanId.text,
                                            eventM.impactCategory.text);
        std::string held;
        if (memory.isAbsent) {
            held = notInMemory;
        } else if (memory.id.isTold()) {
            held = fmt::format("id {}, {}, {} to {}", memory.id.text, memory.model.text,
                               withoutMidnight(memory.validFrom.text),
                               withoutMidnight(memory.validTo.text));
            append(held, "\n", tableText(memory.entries, "  "));
        }
        add("Rate plan", said, eventM.ratePlan.line, held, memory.code.line);
    }

    // A balance group, price model or discount model: what follows its name, and its lists.
    static std::string objectText(MemoryObject const& object) {
        if (object.isAbsent) {
            return notInMemory;
        }
        std::string text(object.about);
        for (auto const& table : object.content.tables()) {
            append(text, "\n", tableText(&table, "  "));
        }
        return text;
    }

    void addObjects(char const* label, std::vector<Fact> const& said,
                    std::vector<ShownObject> const& held) {
        for (std::size_t i = 0; i < std::max(said.size(), held.size()); ++i) {
            auto const* const fact = i < said.size() ? &said[i] : nullptr;
            auto const* const shown = i < held.size() ? &held[i] : nullptr;
            std::string text;
            if (shown != nullptr) {
                bool const isSame = fact != nullptr && fact->text == shown->object->name;
                text = isSame ? std::string() : std::string(shown->object->name);
                append(text, ": ", objectText(*shown->object));
            }
            add(label, fact == nullptr ? std::string() : std::string(fact->text),
                fact == nullptr ? 0 : fact->line, std::move(text),
                shown == nullptr ? 0 : shown->line);
        }
    }

    void addBalanceGroup(Fact const& said, HeldMemory const& memory) {
        std::string held;
        for (auto const& group : memory.balanceGroups) {
            append(held, "\n",
                   fmt::format("{}{}{}", group.object->name,
                               group.object->isAbsent ? ": " : " of account ",
                               objectText(*group.object)));
        }
        add("Balance group", std::string(said.text), said.line, held,
            memory.balanceGroups.empty() ? 0 : memory.balanceGroups.front().line);
    }

    // The objects of a list by number, and those that are absent.
    static std::string heldObject(HeldMemory const& memory, std::string_view number,
                                  LineNumber& line) {
        for (auto const* const list : {&memory.discounts, &memory.sponsorships}) {
            for (std::size_t row = 0; list->table != nullptr && row < list->table->rowCount;
                 ++row) {
                if (list->table->cell(row, 0) == number) {
                    line = list->table->lineOf(row);
                    return rowText(*list->table, row);
                }
            }
            for (auto const& absent : list->absent) {
                if (absent.text == number) {
                    line = absent.line;
                    return notInMemory;
                }
            }
        }
        return {};
    }

    void addItems(char const* whose, std::vector<UsedItem> const& items, HeldMemory const& memory) {
        for (auto const& item : items) {
            LineNumber line = 0;
            auto held = heldObject(memory, item.object.text, line);
            add(fmt::format("{} discount", whose),
                fmt::format("{} {}", item.object.text, item.model.text), item.object.line,
                std::move(held), line);
        }
        for (auto const& model : memory.discountModels) {
            add("Discount model", std::string(model.object->name), 0, objectText(*model.object),
                model.line);
        }
    }

    void addOwner(SharingOwner const& owner) {
        add("Owner",
            fmt::format("{} {}, account {}", owner.type.text, owner.id.text, owner.account.text),
            owner.id.line, {}, 0);
        addBalanceGroup(owner.balanceGroup, owner.memory);
        addItems("Shared", owner.items, owner.memory);
    }

    EventFacts const& eventM;
    std::vector<PageRow> rowsM;
};

} // namespace

std::vector<PageRow> pageRows(EventFacts const& event) {
    return RowList(event).make();
}

std::optional<std::size_t> rowOfLine(std::vector<PageRow> const& rows, LineNumber line) {
    std::optional<std::size_t> nearest;
    LineNumber nearestLine = 0;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        for (auto const begin : {rows[i].saidLine, rows[i].heldLine}) {
            if (begin != 0 && begin <= line && begin > nearestLine) {
                nearest = i;
                nearestLine = begin;
            }
        }
    }
    return nearest;
}

} // namespace reader
