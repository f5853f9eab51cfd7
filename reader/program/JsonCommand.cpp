#include "program/JsonCommand.h"

#include "facts/Times.h"
#include "program/EventJudge.h"
#include "program/Program.h"
#include "text/Output.h"

#include <nlohmann/json.hpp>

namespace reader {

namespace {

using Json = nlohmann::ordered_json;

// Raised when a field changes its meaning or goes away.
constexpr int formatVersion = 1;

// A member that is not there yet: headings may stand twice in a table of others.
std::string freeName(Json const& object, std::string_view name) {
    std::string result(name);
    for (int occurrence = 2; object.contains(result); ++occurrence) {
        result = fmt::format("{} {}", name, occurrence);
    }
    return result;
}

void addFact(Json& object, char const* name, Fact const& fact) {
    if (fact.isTold()) {
        object[name] = fact.text;
    }
}

Json itemsOf(std::vector<UsedItem> const& items) {
    auto list = Json::array();
    for (auto const& item : items) {
        Json object;
        addFact(object, "object", item.object);
        addFact(object, "model", item.model);
        list.push_back(std::move(object));
    }
    return list;
}

Json ownersOf(EventFacts const& event) {
    auto list = Json::array();
    for (auto const& owner : event.owners) {
        Json object;
        addFact(object, "account", owner.account);
        addFact(object, "id", owner.id);
        addFact(object, "type", owner.type);
        addFact(object, "balanceGroup", owner.balanceGroup);
        object["items"] = itemsOf(owner.items);
        list.push_back(std::move(object));
    }
    return list;
}

Json tableOf(Table const& table) {
    Json object;
    object["title"] = table.title.substr(indentOf(table.title));
    object["line"] = table.line;
    auto rows = Json::array();
    for (std::size_t row = 0; row < table.rowCount; ++row) {
        auto cells = Json::object();
        for (std::size_t column = 0; column < table.columnCount; ++column) {
            cells[freeName(cells, table.heading(column))] = table.cell(row, column);
        }
        if (row == table.markedRow) {
            cells[freeName(cells, "marked")] = true;
        }
        rows.push_back(std::move(cells));
    }
    object["rows"] = std::move(rows);
    return object;
}

Json sectionOf(SectionText const& section, bool hasRawText) {
    TableLayouts layouts;
    ModuleText text;
    text.read(LineIndex(section.text), section.line, layouts);
    Json object;
    object["line"] = section.line;
    auto lines = Json::array();
    auto tables = Json::array();
    for (auto const& item : text.items()) {
        if (item.table) {
            tables.push_back(tableOf(text.tables()[*item.table]));
        } else {
            lines.push_back(item.text);
        }
    }
    object["lines"] = std::move(lines);
    object["tables"] = std::move(tables);
    if (hasRawText) {
        object["raw"] = section.text;
    }
    return object;
}

Json findingsOf(std::vector<Finding> const& findings) {
    auto list = Json::array();
    for (auto const& finding : findings) {
        auto const& kind = about(finding.kind);
        list.push_back({{"kind", kind.name},
                        {"severity", nameOf(kind.severity)},
                        {"line", finding.line},
                        {"subject", finding.subject},
                        {"says", finding.says},
                        {"holds", finding.holds},
                        {"relation", finding.relation}});
    }
    return list;
}

void addEvent(Json& object, EventFacts const& event) {
    addFact(object, "customer", event.customer);
    addFact(object, "service", event.service);
    addFact(object, "serviceId", event.serviceId);
    addFact(object, "serviceType", event.serviceType);
    addFact(object, "eventType", event.eventType);
    addFact(object, "chargingStartSeconds", event.chargingStart);
    if (auto const seconds = chargingSeconds(event.chargingStart.text)) {
        object["chargingStart"] = isoTime(*seconds);
    }
    addFact(object, "account", event.account);
    addFact(object, "balanceGroup", event.balanceGroup);
    addFact(object, "ratePlan", event.ratePlan);
    addFact(object, "ratePlanId", event.ratePlanId);
    addFact(object, "ratePlanVersion", event.ratePlanVersion);
    addFact(object, "impactCategory", event.impactCategory);
    auto models = Json::array();
    for (auto const& code : event.priceModels) {
        models.push_back(code.text);
    }
    object["priceModels"] = std::move(models);
    object["ownDiscounts"] = itemsOf(event.ownDiscounts);
    object["owners"] = ownersOf(event);
}

} // namespace

int writeJson(Options const& options) {
    Output out;
    forEachJudged(options, [&](JudgedEvent const& judged) {
        auto const& event = judged.event;
        bool const isEvent = event.line != 0;
        Json object;
        object["version"] = formatVersion;
        object["file"] = judged.file;
        object["kind"] = !isEvent ? "outside" : event.kind == TextKind::report ? "report" : "dump";
        if (isEvent) {
            object["line"] = event.line;
            object["number"] = event.number;
            addEvent(object, event);
            auto sections = Json::object();
            for (auto const& section : event.sections) {
                sections[std::string(sectionNames[static_cast<std::size_t>(section.name)])] =
                    sectionOf(section, options.hasRawText);
            }
            object["sections"] = std::move(sections);
            if (options.hasRawText) {
                object["raw"] = event.bytes;
            }
        }
        object["findings"] = findingsOf(judged.findings);
        // Bytes that are no UTF-8 become U+FFFD.
        out.write(object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n");
    });
    out.flush();
    return done;
}

} // namespace reader
