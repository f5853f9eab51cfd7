#include "DiscountData.h"

#include "DumpText.h"

#include <array>

namespace MOD {

namespace {

constexpr std::array<Column<DiscountObject>, 9> objectColumns(char const* idColumn) {
    return {{
        {idColumn, &DiscountObject::id},
        {"OWNER_TYPE", &DiscountObject::ownerType},
        {"OWNER_ID", &DiscountObject::ownerId},
        {"ACCOUNT_ID", &DiscountObject::accountId},
        {"MODEL_NAME", &DiscountObject::model},
        {"STATUS", &DiscountObject::status},
        {"VALID_FROM", &DiscountObject::validFrom},
        {"VALID_TO", &DiscountObject::validTo},
        {"PURCHASED_AT", &DiscountObject::purchasedAt},
    }};
}
constexpr auto discountColumns = objectColumns("DISCOUNT_ID");
constexpr auto sponsorshipColumns = objectColumns("SPONSORSHIP_ID");
constexpr Table<DiscountObject> discountTable{"DISCOUNT_OBJECT", 1, discountColumns};
constexpr Table<DiscountObject> sponsorshipTable{"SPONSORSHIP_OBJECT", 1, sponsorshipColumns};

constexpr Column<DiscountModel> modelColumns[] = {
    {"MODEL_NAME", &DiscountModel::name},
    {"DESCRIPTION", &DiscountModel::description},
};
constexpr Table<DiscountModel> modelTable{"DISCOUNT_MODEL", 1, modelColumns};

constexpr Column<DiscountRule> ruleColumns[] = {
    {"MODEL_NAME", &DiscountRule::modelName},
    {"RULE_NO", &DiscountRule::number},
    {"RULE_NAME", &DiscountRule::name},
    {"IMPACT_CATEGORY", &DiscountRule::impactCategory},
    {"UNIT", &DiscountRule::unit},
};
constexpr Table<DiscountRule> ruleTable{"DISCOUNT_RULE", 2, ruleColumns};

constexpr Column<DiscountStep> stepColumns[] = {
    {"MODEL_NAME", &DiscountStep::modelName},     {"RULE_NO", &DiscountStep::ruleNumber},
    {"STEP_NO", &DiscountStep::number},           {"THRESHOLD_FROM", &DiscountStep::thresholdFrom},
    {"THRESHOLD_TO", &DiscountStep::thresholdTo}, {"SHARE", &DiscountStep::share},
};
constexpr Table<DiscountStep> stepTable{"DISCOUNT_STEP", 3, stepColumns};

constexpr ListColumn<DiscountObject> objectList[] = {
    {"Object", &DiscountObject::id},
    {"Model", &DiscountObject::model},
    {"Owner type", &DiscountObject::ownerType},
    {"Owner", &DiscountObject::ownerId},
    {"Account", &DiscountObject::accountId},
    {"Status", &DiscountObject::status},
    {"Valid from", &DiscountObject::validFrom},
    {"Valid to", &DiscountObject::validTo},
    {"Purchased", &DiscountObject::purchasedAt},
};

constexpr ListColumn<DiscountRule> ruleList[] = {
    {"Rule", &DiscountRule::number},
    {"Name", &DiscountRule::name},
    {"Impact category", &DiscountRule::impactCategory},
    {"Unit", &DiscountRule::unit},
};

constexpr ListColumn<DiscountStep> stepList[] = {
    {"Rule", &DiscountStep::ruleNumber},    {"Step", &DiscountStep::number},
    {"From", &DiscountStep::thresholdFrom}, {"Below", &DiscountStep::thresholdTo, "open"},
    {"Share %", &DiscountStep::share},
};

template <class Row>
std::span<Row const> rowsOfModel(std::vector<Row> const& rows, std::string_view name,
                                 TextPool const& texts) {
    return equalRows(rows, [&](Row const& row) { return texts[row.modelName] <=> name; });
}

} // namespace

std::vector<DAT::LoadedTable> DiscountData::load(RWDBConnection const& connection,
                                                 RowReport const& report, std::stop_token stop) {
    TableLoader tables(connection, textsM, report, std::move(stop));
    modelsM = tables.load(modelTable);
    rulesM = tables.load<DiscountRule>(
        ruleTable, [this](DiscountRule const& row) { return unknownModel(row.modelName); });
    stepsM = tables.load<DiscountStep>(stepTable, [this](DiscountStep const& row) {
        return ruleOf(row) == nullptr
                   ? noUsableRow("DISCOUNT_RULE",
                                 {{"MODEL_NAME", std::string(textsM[row.modelName])},
                                  {"RULE_NO", std::to_string(row.ruleNumber)}})
                   : thresholdFault(row);
    });
    RowFault<DiscountObject> const objectFault = [this](DiscountObject const& row) {
        auto const reason = unknownModel(row.model);
        return reason.empty() ? validityFault(row) : reason;
    };
    discountsM = tables.load(discountTable, objectFault);
    sponsorshipsM = tables.load(sponsorshipTable, objectFault);
    return tables.loaded();
}

void DiscountData::dumpDiscounts(std::ostream& out,
                                 RWTValOrderedVector<unsigned long> const& ids) const {
    dumpObjects(out, "discount object", discountsM, ids);
}

void DiscountData::dumpSponsorships(std::ostream& out,
                                    RWTValOrderedVector<unsigned long> const& ids) const {
    dumpObjects(out, "sponsorship object", sponsorshipsM, ids);
}

void DiscountData::dumpModels(std::ostream& out,
                              RWTValOrderedVector<BAS::String> const& names) const {
    DumpText text(textsM);
    text.line("{} asked", counted(names.entries(), "discount model"));
    for (auto const& name : names) {
        dumpModel(text, name.view());
    }
    text.writeLines(out);
}

void DiscountData::dumpObjects(std::ostream& out, char const* noun,
                               std::vector<DiscountObject> const& objects,
                               RWTValOrderedVector<unsigned long> const& ids) const {
    DumpText text(textsM);
    text.line("{} asked", counted(ids.entries(), noun));
    std::vector<DiscountObject> found;
    std::vector<unsigned long> absent;
    for (auto const id : ids) {
        auto const* const object =
            equalRow(objects, [&](DiscountObject const& row) { return row.id <=> id; });
        if (object == nullptr) {
            absent.push_back(id);
        } else {
            found.push_back(*object);
        }
    }
    if (!found.empty()) {
        text.list<DiscountObject>(4, objectList, found);
    }
    for (auto const id : absent) {
        text.line("    {} {}: not in memory", noun, id);
    }
    text.writeLines(out);
}

void DiscountData::dumpModel(DumpText& text, std::string_view name) const {
    auto const* const found = model(name);
    if (found == nullptr) {
        text.line("    discount model {}: not in memory", shownText(name));
        return;
    }
    auto const description = shownValue(found->description, textsM);
    text.line("    discount model {}{}{}", shownText(name), description.empty() ? "" : ": ",
              description);
    text.line("      Rules");
    text.list<DiscountRule>(8, ruleList, rowsOfModel(rulesM, name, textsM));
    text.line("      Steps, thresholds in the units of their rules");
    text.list<DiscountStep>(8, stepList, rowsOfModel(stepsM, name, textsM));
}

std::string DiscountData::unknownModel(Text name) const {
    return model(textsM[name]) == nullptr
               ? noUsableRow("DISCOUNT_MODEL", {{"MODEL_NAME", std::string(textsM[name])}})
               : std::string();
}

DiscountModel const* DiscountData::model(std::string_view name) const {
    return equalRow(modelsM, [&](DiscountModel const& row) { return textsM[row.name] <=> name; });
}

DiscountRule const* DiscountData::ruleOf(DiscountStep const& step) const {
    return equalRow(rulesM, [&](DiscountRule const& row) {
        auto const order = compareValues(row.modelName, step.modelName, textsM);
        return std::is_eq(order) ? row.number <=> step.ruleNumber : order;
    });
}

} // namespace MOD
