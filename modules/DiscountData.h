// The discount and sponsorship objects in memory, by number, and the discount models, by name.
// Loaded once, then only read; safe to read on any thread.
#pragma once

#include "TableLoader.h"

#include "BAS/String.h"

#include <iosfwd>

namespace MOD {

class DumpText;

// A discount or sponsorship that was bought.
struct DiscountObject {
    std::uint64_t id = 0;
    Text ownerType;
    std::uint64_t ownerId = 0;
    std::uint64_t accountId = 0;
    Text model;
    Text status;
    UtcTime validFrom;
    EndTime validTo;
    UtcTime purchasedAt;
};

struct DiscountModel {
    Text name;
    std::optional<Text> description;
};

struct DiscountRule {
    Text modelName;
    std::uint64_t number = 0;
    Text name;
    Text impactCategory;
    Text unit;
};

struct DiscountStep {
    Text modelName;
    std::uint64_t ruleNumber = 0;
    std::uint64_t number = 0;
    Decimal thresholdFrom;
    std::optional<Decimal> thresholdTo;
    // Percent of the charge.
    Decimal share;
};

class DiscountData {
public:
    // Returns what each table gave. Throws std::runtime_error for a table that can't be read, and
    // when a stop is requested. Once for each object.
    std::vector<DAT::LoadedTable> load(RWDBConnection const& connection, RowReport const& report,
                                       std::stop_token stop = {});

    void dumpDiscounts(std::ostream& out, RWTValOrderedVector<unsigned long> const& ids) const;
    void dumpSponsorships(std::ostream& out, RWTValOrderedVector<unsigned long> const& ids) const;
    void dumpModels(std::ostream& out, RWTValOrderedVector<BAS::String> const& names) const;

private:
    void dumpObjects(std::ostream& out, char const* noun,
                     std::vector<DiscountObject> const& objects,
                     RWTValOrderedVector<unsigned long> const& ids) const;
    void dumpModel(DumpText& text, std::string_view name) const;
    std::string unknownModel(Text name) const;
    DiscountModel const* model(std::string_view name) const;
    DiscountRule const* ruleOf(DiscountStep const& step) const;

    TextPool textsM;
    std::vector<DiscountModel> modelsM;
    std::vector<DiscountRule> rulesM;
    std::vector<DiscountStep> stepsM;
    std::vector<DiscountObject> discountsM;
    std::vector<DiscountObject> sponsorshipsM;
};

} // namespace MOD
