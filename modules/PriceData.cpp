#include "PriceData.h"

#include "DumpText.h"

namespace MOD {

namespace {

constexpr Column<PriceModel> modelColumns[] = {
    {"PRICEMODEL_CODE", &PriceModel::code},
    {"DESCRIPTION", &PriceModel::description},
    {"CURRENCY", &PriceModel::currency},
};
constexpr Table<PriceModel> modelTable{"PRICEMODEL", 1, modelColumns};

constexpr Column<PriceStep> stepColumns[] = {
    {"PRICEMODEL_CODE", &PriceStep::code},
    {"STEP_NO", &PriceStep::number},
    {"UNIT", &PriceStep::unit},
    {"THRESHOLD_FROM", &PriceStep::thresholdFrom},
    {"THRESHOLD_TO", &PriceStep::thresholdTo},
    {"AMOUNT", &PriceStep::amount},
    {"PER_QUANTITY", &PriceStep::perQuantity},
    {"VALID_FROM", &PriceStep::validFrom},
    {"VALID_TO", &PriceStep::validTo},
};
constexpr Table<PriceStep> stepTable{"PRICEMODEL_STEP", 2, stepColumns};

constexpr Column<PriceImpact> impactColumns[] = {
    {"PRICEMODEL_CODE", &PriceImpact::code},
    {"STEP_NO", &PriceImpact::stepNumber},
    {"IMPACT_NO", &PriceImpact::number},
    {"RESOURCE", &PriceImpact::resource},
    {"UNIT", &PriceImpact::unit},
    {"AMOUNT", &PriceImpact::amount},
};
constexpr Table<PriceImpact> impactTable{"PRICEMODEL_IMPACT", 3, impactColumns};

constexpr ListColumn<PriceStep> stepList[] = {
    {"Step", &PriceStep::number},
    {"From", &PriceStep::thresholdFrom},
    {"Below", &PriceStep::thresholdTo, "open"},
    {"Amount", &PriceStep::amount},
    {"Per", &PriceStep::perQuantity},
    {"Unit", &PriceStep::unit},
    {"Valid from", &PriceStep::validFrom},
    {"Valid to", &PriceStep::validTo},
};

constexpr ListColumn<PriceImpact> impactList[] = {
    {"Step", &PriceImpact::stepNumber},   {"Impact", &PriceImpact::number},
    {"Resource", &PriceImpact::resource}, {"Amount", &PriceImpact::amount},
    {"Unit", &PriceImpact::unit},
};

template <class Row>
std::span<Row const> rowsOfModel(std::vector<Row> const& rows, std::string_view code,
                                 TextPool const& texts) {
    return equalRows(rows, [&](Row const& row) { return texts[row.code] <=> code; });
}

} // namespace

std::vector<DAT::LoadedTable> PriceData::load(RWDBConnection const& connection,
                                              RowReport const& report, std::stop_token stop) {
    TableLoader tables(connection, textsM, report, std::move(stop));
    modelsM = tables.load(modelTable);
    stepsM = tables.load<PriceStep>(stepTable, [this](PriceStep const& row) {
        if (model(textsM[row.code]) == nullptr) {
            return noUsableRow("PRICEMODEL", {{"PRICEMODEL_CODE", std::string(textsM[row.code])}});
        }
        if (row.perQuantity <= Decimal()) {
            return std::string("PER_QUANTITY is not above zero");
        }
        auto const reason = thresholdFault(row);
        return reason.empty() ? validityFault(row) : reason;
    });
    impactsM = tables.load<PriceImpact>(impactTable, [this](PriceImpact const& row) {
        return stepOf(row) == nullptr
                   ? noUsableRow("PRICEMODEL_STEP",
                                 {{"PRICEMODEL_CODE", std::string(textsM[row.code])},
                                  {"STEP_NO", std::to_string(row.stepNumber)}})
                   : std::string();
    });
    return tables.loaded();
}

void PriceData::dump(std::ostream& out, RWTValOrderedVector<BAS::String> const& codes) const {
    DumpText text(textsM);
    text.line("{} asked", counted(codes.entries(), "price model"));
    for (auto const& code : codes) {
        dumpModel(text, code.view());
    }
    text.writeUpToLastLineEnd(out);
}

void PriceData::dumpModel(DumpText& text, std::string_view code) const {
    auto const* const found = model(code);
    if (found == nullptr) {
        text.line("  price model {}: not in memory", shownText(code));
        return;
    }
    auto const description = shownValue(found->description, textsM);
    text.line("  price model {}{}{}", shownText(code), description.empty() ? "" : ": ",
              description);
    text.line("    Steps, amounts in {}", shownValue(found->currency, textsM));
    text.list<PriceStep>(6, stepList, rowsOfModel(stepsM, code, textsM));
    text.line("    Balance impacts, for each quantity of their steps");
    text.list<PriceImpact>(6, impactList, rowsOfModel(impactsM, code, textsM));
}

PriceModel const* PriceData::model(std::string_view code) const {
    return equalRow(modelsM, [&](PriceModel const& row) { return textsM[row.code] <=> code; });
}

PriceStep const* PriceData::stepOf(PriceImpact const& impact) const {
    return equalRow(stepsM, [&](PriceStep const& row) {
        auto const order = compareValues(row.code, impact.code, textsM);
        return std::is_eq(order) ? row.number <=> impact.stepNumber : order;
    });
}

} // namespace MOD
