#include "RateplanData.h"

#include "DumpText.h"

namespace MOD {

namespace {

constexpr Column<Rateplan> rateplanColumns[] = {
    {"RATEPLAN_CODE", &Rateplan::code},   {"VERSION", &Rateplan::version},
    {"RATEPLAN_ID", &Rateplan::id},       {"MODEL", &Rateplan::model},
    {"VALID_FROM", &Rateplan::validFrom}, {"VALID_TO", &Rateplan::validTo},
};
constexpr Table<Rateplan> rateplanTable{"RATEPLAN", 2, rateplanColumns};

constexpr Column<RateplanEntry> entryColumns[] = {
    {"RATEPLAN_CODE", &RateplanEntry::code},
    {"VERSION", &RateplanEntry::version},
    {"ENTRY_NO", &RateplanEntry::number},
    {"SERVICE_CODE", &RateplanEntry::serviceCode},
    {"SERVICE_CLASS", &RateplanEntry::serviceClass},
    {"IMPACT_CATEGORY", &RateplanEntry::impactCategory},
    {"PRICEMODEL_CODE", &RateplanEntry::priceModel},
};
constexpr Table<RateplanEntry> entryTable{"RATEPLAN_ENTRY", 3, entryColumns};

constexpr ListColumn<RateplanEntry> entryList[] = {
    {"Entry", &RateplanEntry::number},
    {"Service code", &RateplanEntry::serviceCode},
    {"Service class", &RateplanEntry::serviceClass},
    {"Impact category", &RateplanEntry::impactCategory},
    {"Price model", &RateplanEntry::priceModel},
};

// Compares a row of a rate plan version with one of them.
template <class Row>
std::strong_ordering orderTo(Row const& row, std::string_view code, std::int64_t version,
                             TextPool const& texts) {
    auto const order = texts[row.code] <=> code;
    return std::is_eq(order) ? row.version <=> version : order;
}

// "*" matches everything, in an entry and in a query.
bool matchesValue(std::string_view value, std::string_view asked) {
    return value == asked || value == "*" || asked == "*";
}

} // namespace

std::vector<DAT::LoadedTable> RateplanData::load(RWDBConnection const& connection,
                                                 RowReport const& report, std::stop_token stop) {
    TableLoader tables(connection, textsM, report, std::move(stop));
    rateplansM = tables.load<Rateplan>(rateplanTable, validityFault<Rateplan>);
    entriesM = tables.load<RateplanEntry>(entryTable, [this](RateplanEntry const& row) {
        return rateplan(textsM[row.code], row.version) == nullptr
                   ? noUsableRow("RATEPLAN", {{"RATEPLAN_CODE", std::string(textsM[row.code])},
                                              {"VERSION", std::to_string(row.version)}})
                   : std::string();
    });
    return tables.loaded();
}

void RateplanData::dump(std::ostream& out, Asked const& asked) const {
    DumpText text(textsM);
    if (auto const* const found = rateplan(asked.code, asked.version)) {
        dumpVersion(text, *found, asked);
    } else {
        dumpAbsence(text, asked);
    }
    text.writeUpToLastLineEnd(out);
}

void RateplanData::dumpVersion(DumpText& text, Rateplan const& rateplan, Asked const& asked) const {
    text.line("Rate plan {} version {}", shownText(asked.code), asked.version);
    text.line("  Rate plan id {}, model {}, valid from {} to {}", rateplan.id,
              shownValue(rateplan.model, textsM), rateplan.validFrom.text(),
              rateplan.validTo.text());
    auto const entries = equalRows(entriesM, [&](RateplanEntry const& row) {
        return orderTo(row, asked.code, asked.version, textsM);
    });
    std::vector<RateplanEntry> found;
    for (auto const& entry : entries) {
        if (matches(entry, asked)) {
            found.push_back(entry);
        }
    }
    text.line("");
    text.line(
        "  Entries, all charged, for service code {}, service class {} and impact category {}: "
        "{} of {}",
        shownText(asked.serviceCode), shownText(asked.serviceClass),
        shownText(asked.impactCategory), found.size(), entries.size());
    text.list<RateplanEntry>(4, entryList, found);
}

void RateplanData::dumpAbsence(DumpText& text, Asked const& asked) const {
    text.line("Rate plan {} version {}: not in memory", shownText(asked.code), asked.version);
    std::string others;
    for (auto const& other : equalRows(
             rateplansM, [&](Rateplan const& row) { return textsM[row.code] <=> asked.code; })) {
        others += (others.empty() ? "" : ", ") + std::to_string(other.version);
    }
    if (!others.empty()) {
        text.line("  Versions in memory: {}", others);
    }
}

bool RateplanData::matches(RateplanEntry const& entry, Asked const& asked) const {
    return matchesValue(textsM[entry.serviceCode], asked.serviceCode) &&
           matchesValue(textsM[entry.serviceClass], asked.serviceClass) &&
           matchesValue(textsM[entry.impactCategory], asked.impactCategory);
}

Rateplan const* RateplanData::rateplan(std::string_view code, std::int64_t version) const {
    return equalRow(rateplansM,
                    [&](Rateplan const& row) { return orderTo(row, code, version, textsM); });
}

} // namespace MOD
