#include "generate/GeneratedDatabase.h"

#include "generate/GeneratedTime.h"

namespace host {

namespace {

constexpr std::uint64_t rowsOfStatement = 500;
constexpr std::string_view since = "2020-01-01T00:00:00Z"; // of everything that is sold
constexpr std::string_view monthBegin = "2026-11-01T00:00:00Z";
constexpr std::string_view monthEnd = "2026-12-01T00:00:00Z";

// The event types to which a discount model applies.
std::string_view eventTypeOf(DiscountModel const& model) {
    for (auto const& service : services) {
        if (service.code == model.serviceCode) {
            return service.eventType;
        }
    }
    return "*";
}

} // namespace

void GeneratedDatabase::beginTable(std::string_view tableAndColumns) {
    tableM = tableAndColumns;
    rowsOfTableM = 0;
}

template <class Format, class... Args>
void GeneratedDatabase::addRow(Format const& format, Args const&... arguments) {
    if (rowsOfTableM % rowsOfStatement == 0) {
        fileM.print(FMT_COMPILE("{}\nINSERT INTO {} VALUES\n"), rowsOfTableM == 0 ? "" : ";",
                    tableM);
    } else {
        fileM.write(",\n");
    }
    fileM.print(format, arguments...);
    ++rowsOfTableM;
    ++rowsM;
}

void GeneratedDatabase::endTable() {
    fileM.write(rowsOfTableM == 0 ? "" : ";\n");
}

void GeneratedDatabase::write() {
    fileM.write(
        "-- The reference data of generated EDRs, to be run after the script that makes the "
        "tables; for\n-- SQLite and PostgreSQL.\n\nBEGIN;\n");
    writeFramework();
    writeRateplans();
    writePriceModels();
    writeDiscountModels();
    writeAccounts();
    writeServices();
    writeBalances();
    writeOwnedDiscounts();
    writeDiscountObjects();
    writeSponsorships();
    fileM.write("\nCOMMIT;\n");
}

void GeneratedDatabase::writeFramework() {
    beginTable("KWL_PIPELINE (PIPELINE, EDRC_DESC)");
    addRow(FMT_COMPILE("('Main', 'RATED_EVENTS')"));
    endTable();
    beginTable("KWL_EDRC_FIELD (FIELD_ID, FIELD_NAME)");
    for (std::size_t i = 0; i < customerFields.size(); ++i) {
        addRow(FMT_COMPILE("({}, '{}')"), i + 1, customerFields[i]);
    }
    endTable();
    beginTable("KWL_ALIAS_MAP (KEY_ID, REFERENCE, EDRC_DESC, FIELD_ID)");
    for (auto const& service : services) {
        addRow(FMT_COMPILE("('{}', '{}', 'RATED_EVENTS', {})"), service.code,
               service.customerReference, service.customerField);
    }
    endTable();
}

void GeneratedDatabase::writeRateplans() {
    beginTable("RATEPLAN (RATEPLAN_CODE, VERSION, RATEPLAN_ID, MODEL, VALID_FROM, VALID_TO)");
    for (auto const& plan : rateplans) {
        addRow(FMT_COMPILE("('{}', {}, {}, 'FLAT', '{}', NULL)"), plan.code, plan.version,
               plan.number, since);
    }
    endTable();
    beginTable("RATEPLAN_ENTRY (RATEPLAN_CODE, VERSION, ENTRY_NO, SERVICE_CODE, SERVICE_CLASS, "
               "IMPACT_CATEGORY, PRICEMODEL_CODE)");
    for (std::size_t i = 0; i < rateplanEntries.size(); ++i) {
        auto const& entry = rateplanEntries[i];
        auto const& plan = *findRateplan(entry.rateplan);
        addRow(FMT_COMPILE("('{}', {}, {}, '{}', '{}', '{}', '{}')"), plan.code, plan.version,
               i + 1, plan.serviceCode, plan.serviceClass, entry.impactCategory, entry.priceModel);
    }
    endTable();
}

void GeneratedDatabase::writePriceModels() {
    beginTable("PRICEMODEL (PRICEMODEL_CODE, DESCRIPTION, CURRENCY)");
    for (auto const& model : priceModels) {
        addRow(FMT_COMPILE("('{}', '{}', 'EUR')"), model.code, model.description);
    }
    endTable();
    beginTable("PRICEMODEL_STEP (PRICEMODEL_CODE, STEP_NO, UNIT, THRESHOLD_FROM, THRESHOLD_TO, "
               "AMOUNT, PER_QUANTITY, VALID_FROM, VALID_TO)");
    for (auto const& model : priceModels) {
        auto const& measure = measures[model.measure];
        addRow(FMT_COMPILE("('{}', 1, '{}', '0', NULL, '{}.{:04}', '{}', '{}', NULL)"), model.code,
               measure.databaseUnit, model.price / 10'000, model.price % 10'000,
               measure.perQuantity, since);
    }
    endTable();
    beginTable("PRICEMODEL_IMPACT (PRICEMODEL_CODE, STEP_NO, IMPACT_NO, RESOURCE, UNIT, AMOUNT)");
    for (auto const& model : priceModels) {
        addRow(FMT_COMPILE("('{}', 1, 1, 'EUR', 'EUR', '{}.{:04}')"), model.code,
               model.price / 10'000, model.price % 10'000);
    }
    endTable();
}

void GeneratedDatabase::writeDiscountModels() {
    std::vector<DiscountModel> models(ownDiscountModels.begin(), ownDiscountModels.end());
    models.insert(models.end(), sharedDiscountModels.begin(), sharedDiscountModels.end());
    models.insert(models.end(), sponsorshipModels.begin(), sponsorshipModels.end());
    beginTable("DISCOUNT_MODEL (MODEL_NAME, DESCRIPTION)");
    for (auto const& model : models) {
        addRow(FMT_COMPILE("('{}', '{}')"), model.name, model.description);
    }
    endTable();
    beginTable("DISCOUNT_RULE (MODEL_NAME, RULE_NO, RULE_NAME, IMPACT_CATEGORY, UNIT)");
    for (auto const& model : models) {
        addRow(FMT_COMPILE("('{}', 1, 'ALL_USE', '*', 'EUR')"), model.name);
    }
    endTable();
    beginTable("DISCOUNT_STEP (MODEL_NAME, RULE_NO, STEP_NO, THRESHOLD_FROM, THRESHOLD_TO, SHARE)");
    for (auto const& model : models) {
        addRow(FMT_COMPILE("('{}', 1, 1, '0', NULL, '{}')"), model.name, model.share);
    }
    endTable();
}

void GeneratedDatabase::writeAccounts() {
    auto const& customers = customersM.customers();
    beginTable("ACCOUNT (ACCOUNT_ID, STATUS, CURRENCY, PARENT_ID)");
    for (std::uint32_t i = 0; i < customers.size(); ++i) {
        addRow(FMT_COMPILE("({}, 'ACTIVE', 'EUR', NULL)"), accountId(i));
    }
    endTable();
    beginTable("CUSTOMER_IDENTIFIER (IDENTIFIER, ACCOUNT_ID)");
    for (std::uint32_t i = 0; i < customers.size(); ++i) {
        addRow(FMT_COMPILE("('{}', {})"), phoneNumber(i), accountId(i));
        if (customers[i].hasService[data]) {
            addRow(FMT_COMPILE("('{}', {})"), subscriberNumber(i), accountId(i));
        }
        if (customers[i].hasService[content]) {
            addRow(FMT_COMPILE("('{}', {})"), userName(i), accountId(i));
        }
    }
    endTable();
}

void GeneratedDatabase::writeServices() {
    auto const& customers = customersM.customers();
    beginTable("ACCOUNT_SERVICE (ACCOUNT_ID, SERVICE_ID, SERVICE_TYPE, LOGIN, STATUS)");
    for (std::uint32_t i = 0; i < customers.size(); ++i) {
        for (std::size_t service = 0; service < services.size(); ++service) {
            if (customers[i].hasService[service]) {
                addRow(FMT_COMPILE("({}, {}, '{}', '{}', 'ACTIVE')"), accountId(i),
                       serviceId(i, service), services[service].type,
                       customerIdentifier(i, services[service]));
            }
        }
    }
    endTable();
    beginTable("ACCOUNT_PRODUCT (ACCOUNT_ID, PRODUCT_ID, RATEPLAN_CODE, SERVICE_ID, EVENT_TYPE, "
               "STATUS, VALID_FROM, VALID_TO)");
    for (std::uint32_t i = 0; i < customers.size(); ++i) {
        for (std::size_t service = 0; service < services.size(); ++service) {
            if (customers[i].hasService[service]) {
                addRow(FMT_COMPILE("({}, {}, '{}', {}, '{}', 'ACTIVE', '{}', NULL)"), accountId(i),
                       productId(i, service), segments[customers[i].segment][service].rateplan,
                       serviceId(i, service), services[service].eventType,
                       databaseDay(customers[i].customerSince));
            }
        }
    }
    endTable();
}

// One balance each, all of it owed for the present month.
void GeneratedDatabase::writeBalances() {
    auto const& customers = customersM.customers();
    beginTable("BALANCE_GROUP (BALANCE_GROUP_ID, ACCOUNT_ID)");
    for (std::uint32_t i = 0; i < customers.size(); ++i) {
        addRow(FMT_COMPILE("({}, {})"), balanceGroupId(i), accountId(i));
    }
    endTable();
    std::vector<std::uint32_t> amounts; // hundredths of a cent
    beginTable("BALANCE (BALANCE_GROUP_ID, RESOURCE, UNIT, AMOUNT, CREDIT_LIMIT, VALID_FROM, "
               "VALID_TO)");
    for (std::uint32_t i = 0; i < customers.size(); ++i) {
        amounts.push_back(randomM.below(1'000'000));
        addRow(FMT_COMPILE("({}, 'EUR', 'EUR', '{}.{:04}', '150.00', '{}', NULL)"),
               balanceGroupId(i), amounts[i] / 10'000, amounts[i] % 10'000,
               databaseDay(customers[i].customerSince));
    }
    endTable();
    beginTable("SUB_BALANCE (BALANCE_GROUP_ID, RESOURCE, SUB_BALANCE_NO, AMOUNT, VALID_FROM, "
               "VALID_TO)");
    for (std::uint32_t i = 0; i < customers.size(); ++i) {
        addRow(FMT_COMPILE("({}, 'EUR', 1, '{}.{:04}', '{}', '{}')"), balanceGroupId(i),
               amounts[i] / 10'000, amounts[i] % 10'000, monthBegin, monthEnd);
    }
    endTable();
}

void GeneratedDatabase::writeOwnedDiscounts() {
    beginTable("ACCOUNT_DISCOUNT (ACCOUNT_ID, DISCOUNT_ID, MODEL_NAME, SERVICE_ID, EVENT_TYPE, "
               "STATUS, VALID_FROM, VALID_TO)");
    forEachDiscount([this](DiscountObject const& object) {
        addRow(FMT_COMPILE("({}, {}, '{}', NULL, '{}', 'ACTIVE', '{}', NULL)"), object.account,
               object.id, object.model.name, eventTypeOf(object.model), object.validFrom);
    });
    endTable();
}

void GeneratedDatabase::writeDiscountObjects() {
    beginTable("DISCOUNT_OBJECT (DISCOUNT_ID, OWNER_TYPE, OWNER_ID, ACCOUNT_ID, MODEL_NAME, "
               "STATUS, VALID_FROM, VALID_TO, PURCHASED_AT)");
    forEachDiscount([this](DiscountObject const& object) {
        addRow(FMT_COMPILE("({}, '{}', {}, {}, '{}', 'ACTIVE', '{}', NULL, '{}')"), object.id,
               object.ownerType, object.ownerId, object.account, object.model.name,
               object.validFrom, object.validFrom);
    });
    endTable();
}

template <class Action>
void GeneratedDatabase::forEachDiscount(Action const& action) const {
    auto const& customers = customersM.customers();
    for (std::uint32_t i = 0; i < customers.size(); ++i) {
        for (std::size_t place = 0; place < customers[i].ownDiscounts; ++place) {
            action({ownDiscountId(i, place), "/account", accountId(i), accountId(i),
                    ownDiscountModels[customers[i].ownDiscountModels[place]],
                    databaseDay(customers[i].customerSince)});
        }
    }
    auto const& groups = customersM.groups();
    for (std::uint32_t g = 0; g < groups.size(); ++g) {
        for (std::size_t place = 0; place < groups[g].sharedDiscounts; ++place) {
            action({sharedDiscountId(g, place), "/group/sharing", groupId(g),
                    accountId(groups[g].owner),
                    sharedDiscountModels[groups[g].sharedDiscountModels[place]],
                    std::string(since)});
        }
    }
}

void GeneratedDatabase::writeSponsorships() {
    auto const& groups = customersM.groups();
    beginTable("SPONSORSHIP_OBJECT (SPONSORSHIP_ID, OWNER_TYPE, OWNER_ID, ACCOUNT_ID, MODEL_NAME, "
               "STATUS, VALID_FROM, VALID_TO, PURCHASED_AT)");
    for (std::uint32_t g = 0; g < groups.size(); ++g) {
        addRow(FMT_COMPILE("({}, '/group/sponsor', {}, {}, '{}', 'ACTIVE', '{}', NULL, '{}')"),
               sponsorshipId(g), groupId(g), accountId(groups[g].owner),
               sponsorshipModels[groups[g].sponsorshipModel].name, since, since);
    }
    endTable();
}

} // namespace host
