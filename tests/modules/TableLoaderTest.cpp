// How rows get into memory: which are left out, with what report, and that the order in which the
// database returns them doesn't show.
#include "AccountData.h"
#include "BalanceData.h"
#include "DiscountData.h"
#include "PriceData.h"
#include "RateplanData.h"

#include "ReferenceDatabase.h"

#include <gmock/gmock.h>

#include <algorithm>

using namespace MOD;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAreArray;

namespace {

template <class Data>
std::vector<std::string> rejectedRows(ReferenceDatabase const& database) {
    return Loaded<Data>(database).rejected;
}

using Rejected = std::vector<std::string> (*)(ReferenceDatabase const&);

std::string const goodRows = R"(
    INSERT INTO ACCOUNT VALUES (1, 'ACTIVE', 'EUR', NULL);
    INSERT INTO ACCOUNT_SERVICE VALUES (1, 31, '/service', NULL, 'ACTIVE');
    INSERT INTO RATEPLAN VALUES ('R', 1, 12, 'FLAT', '2026-01-01T00:00:00Z', NULL);
    INSERT INTO PRICEMODEL VALUES ('P', NULL, 'EUR');
    INSERT INTO BALANCE_GROUP VALUES (21, 1);
    INSERT INTO DISCOUNT_MODEL VALUES ('D', NULL);
    INSERT INTO DISCOUNT_RULE VALUES ('D', 1, 'RULE', '*', 'EUR');
)";

} // namespace

TEST(TableLoader, reportsEachRowThatCantBeUsedOnceAndLeavesItOut) {
    struct {
        Rejected rejected;
        char const* row;
        char const* report;
    } const cases[] = {
        {rejectedRows<AccountData>, "ACCOUNT VALUES (NULL, 'ACTIVE', 'EUR', NULL)",
         "ACCOUNT | ACCOUNT_ID NULL | ACCOUNT_ID is missing"},
        {rejectedRows<AccountData>, "ACCOUNT VALUES ('17x', 'ACTIVE', 'EUR', NULL)",
         "ACCOUNT | ACCOUNT_ID '17x' | ACCOUNT_ID '17x' is not a whole number from 0 up"},
        {rejectedRows<AccountData>, "ACCOUNT VALUES (-5, 'ACTIVE', 'EUR', NULL)",
         "ACCOUNT | ACCOUNT_ID '-5' | ACCOUNT_ID '-5' is not a whole number from 0 up"},
        {rejectedRows<AccountData>, "ACCOUNT VALUES (2, 'ACTIVE', '', NULL)",
         "ACCOUNT | ACCOUNT_ID '2' | CURRENCY is missing"},
        {rejectedRows<AccountData>, "ACCOUNT VALUES (2, 'ACTIVE', 'EUR', 9)",
         "ACCOUNT | ACCOUNT_ID '2' | ACCOUNT has no usable row with ACCOUNT_ID '9'"},
        {rejectedRows<AccountData>, "ACCOUNT VALUES (1, 'ACTIVE', 'EUR', NULL)",
         "ACCOUNT | ACCOUNT_ID '1' | another row has the same key"},
        {rejectedRows<AccountData>, "CUSTOMER_IDENTIFIER VALUES ('a' || char(10) || 'b', 9)",
         R"(CUSTOMER_IDENTIFIER | IDENTIFIER 'a\x0ab' | ACCOUNT has no usable row with ACCOUNT_ID '9')"},
        {rejectedRows<AccountData>, "ACCOUNT_SERVICE VALUES (9, 31, '/service', NULL, 'ACTIVE')",
         "ACCOUNT_SERVICE | ACCOUNT_ID '9', SERVICE_ID '31' | "
         "ACCOUNT has no usable row with ACCOUNT_ID '9'"},
        {rejectedRows<AccountData>,
         "ACCOUNT_PRODUCT VALUES (1, 7, 'R', 32, '*', 'ACTIVE', '2026-01-01T00:00:00Z', NULL)",
         "ACCOUNT_PRODUCT | ACCOUNT_ID '1', PRODUCT_ID '7' | "
         "ACCOUNT_SERVICE has no usable row with ACCOUNT_ID '1', SERVICE_ID '32'"},
        {rejectedRows<AccountData>,
         "ACCOUNT_DISCOUNT VALUES (1, 7, 'D', 31, '*', 'ACTIVE', '2026-01-01', NULL)",
         "ACCOUNT_DISCOUNT | ACCOUNT_ID '1', DISCOUNT_ID '7' | "
         "VALID_FROM '2026-01-01' is not a time such as 2026-01-31T00:00:00Z"},
        {rejectedRows<AccountData>,
         "ACCOUNT_DISCOUNT VALUES (1, 7, 'D', 31, '*', 'ACTIVE', '2026-01-01T00:00:00Z', "
         "'2026-01-01T00:00:00Z')",
         "ACCOUNT_DISCOUNT | ACCOUNT_ID '1', DISCOUNT_ID '7' | "
         "the validity ends before it begins"},
        {rejectedRows<RateplanData>,
         "RATEPLAN VALUES ('R', 'two', 12, 'FLAT', '2026-01-01T00:00:00Z', NULL)",
         "RATEPLAN | RATEPLAN_CODE 'R', VERSION 'two' | VERSION 'two' is not a whole number"},
        {rejectedRows<RateplanData>,
         "RATEPLAN VALUES ('S', 1, 12, 'FLAT', '2026-01-01T00:00:00Z', '2025-01-01T00:00:00Z')",
         "RATEPLAN | RATEPLAN_CODE 'S', VERSION '1' | the validity ends before it begins"},
        {rejectedRows<RateplanData>, "RATEPLAN_ENTRY VALUES ('R', 2, 1, '*', '*', '*', 'P')",
         "RATEPLAN_ENTRY | RATEPLAN_CODE 'R', VERSION '2', ENTRY_NO '1' | "
         "RATEPLAN has no usable row with RATEPLAN_CODE 'R', VERSION '2'"},
        {rejectedRows<PriceData>,
         "PRICEMODEL_STEP VALUES ('P', 1, 's', '0', NULL, '1,5', '1', '2026-01-01T00:00:00Z', "
         "NULL)",
         "PRICEMODEL_STEP | PRICEMODEL_CODE 'P', STEP_NO '1' | "
         "AMOUNT '1,5' is not a decimal number of at most 18 digits"},
        {rejectedRows<PriceData>,
         "PRICEMODEL_STEP VALUES ('P', 1, 's', '5', '5.0', '1', '1', '2026-01-01T00:00:00Z', NULL)",
         "PRICEMODEL_STEP | PRICEMODEL_CODE 'P', STEP_NO '1' | the step ends before it begins"},
        {rejectedRows<PriceData>,
         "PRICEMODEL_STEP VALUES ('P', 1, 's', '0', NULL, '1', '0.0', '2026-01-01T00:00:00Z', "
         "NULL)",
         "PRICEMODEL_STEP | PRICEMODEL_CODE 'P', STEP_NO '1' | PER_QUANTITY is not above zero"},
        {rejectedRows<PriceData>,
         "PRICEMODEL_STEP VALUES ('X', 1, 's', '0', NULL, '1', '1', '2026-01-01T00:00:00Z', NULL)",
         "PRICEMODEL_STEP | PRICEMODEL_CODE 'X', STEP_NO '1' | "
         "PRICEMODEL has no usable row with PRICEMODEL_CODE 'X'"},
        {rejectedRows<PriceData>, "PRICEMODEL_IMPACT VALUES ('P', 4, 1, 'EUR', 'EUR', '1')",
         "PRICEMODEL_IMPACT | PRICEMODEL_CODE 'P', STEP_NO '4', IMPACT_NO '1' | "
         "PRICEMODEL_STEP has no usable row with PRICEMODEL_CODE 'P', STEP_NO '4'"},
        {rejectedRows<BalanceData>,
         "BALANCE VALUES (22, 'EUR', 'EUR', '1', NULL, '2026-01-01T00:00:00Z', NULL)",
         "BALANCE | BALANCE_GROUP_ID '22', RESOURCE 'EUR' | "
         "BALANCE_GROUP has no usable row with BALANCE_GROUP_ID '22'"},
        {rejectedRows<BalanceData>,
         "SUB_BALANCE VALUES (21, 'EUR', 1, '1', '2026-01-01T00:00:00Z', NULL)",
         "SUB_BALANCE | BALANCE_GROUP_ID '21', RESOURCE 'EUR', SUB_BALANCE_NO '1' | "
         "BALANCE has no usable row with BALANCE_GROUP_ID '21', RESOURCE 'EUR'"},
        {rejectedRows<DiscountData>, "DISCOUNT_RULE VALUES ('X', 1, 'RULE', '*', 'EUR')",
         "DISCOUNT_RULE | MODEL_NAME 'X', RULE_NO '1' | "
         "DISCOUNT_MODEL has no usable row with MODEL_NAME 'X'"},
        {rejectedRows<DiscountData>, "DISCOUNT_STEP VALUES ('D', 2, 1, '0', NULL, '10')",
         "DISCOUNT_STEP | MODEL_NAME 'D', RULE_NO '2', STEP_NO '1' | "
         "DISCOUNT_RULE has no usable row with MODEL_NAME 'D', RULE_NO '2'"},
        {rejectedRows<DiscountData>, "DISCOUNT_STEP VALUES ('D', 1, 1, '5', '4', '10')",
         "DISCOUNT_STEP | MODEL_NAME 'D', RULE_NO '1', STEP_NO '1' | "
         "the step ends before it begins"},
        {rejectedRows<DiscountData>,
         "SPONSORSHIP_OBJECT VALUES (6, '/g', 4, 1, 'X', 'ACTIVE', '2026-01-01T00:00:00Z', NULL, "
         "'2026-01-01T00:00:00Z')",
         "SPONSORSHIP_OBJECT | SPONSORSHIP_ID '6' | "
         "DISCOUNT_MODEL has no usable row with MODEL_NAME 'X'"},
    };
    for (auto const& [rejected, row, report] : cases) {
        ReferenceDatabase const database(goodRows + "INSERT INTO " + row + ";");
        EXPECT_THAT(rejected(database), ElementsAre(report)) << row;
    }
}

TEST(TableLoader, leavesOutWhatRefersToARowThatWasLeftOut) {
    ReferenceDatabase const database(R"(
        INSERT INTO ACCOUNT VALUES (1, 'ACTIVE', 'EUR', 2), (2, 'ACTIVE', 'EUR', 3);
        INSERT INTO ACCOUNT VALUES (3, 'ACTIVE', 'EUR', 4), (5, 'ACTIVE', 'EUR', 5);
        INSERT INTO CUSTOMER_IDENTIFIER VALUES ('c1', 1), ('c5', 5);
    )");
    Loaded<AccountData> const loaded(database);
    EXPECT_THAT(
        loaded.rejected,
        ElementsAre("ACCOUNT | ACCOUNT_ID '3' | ACCOUNT has no usable row with ACCOUNT_ID '4'",
                    "ACCOUNT | ACCOUNT_ID '2' | ACCOUNT has no usable row with ACCOUNT_ID '3'",
                    "ACCOUNT | ACCOUNT_ID '1' | ACCOUNT has no usable row with ACCOUNT_ID '2'",
                    "CUSTOMER_IDENTIFIER | IDENTIFIER 'c1' | "
                    "ACCOUNT has no usable row with ACCOUNT_ID '1'"));
    EXPECT_THAT(dumped([&](auto& out) {
                    loaded.data.dump(out, {"c5", 1, "", ""});
                }),
                HasSubstr("Account 5: status ACTIVE, currency EUR, parent account 5"));
}

TEST(TableLoader, givesTheSameDumpWhateverTheOrderOfTheRows) {
    std::vector<std::string> rows{
        "BALANCE_GROUP VALUES (2001, 1)",
        "BALANCE_GROUP VALUES (2001, 2)",
        "BALANCE VALUES (2001, 'EUR', 'EUR', '2', NULL, '2026-01-01T00:00:00Z', NULL)",
        "BALANCE VALUES (2001, 'EUR', 'EUR', '10', NULL, '2026-01-01T00:00:00Z', NULL)",
        "BALANCE VALUES (2001, 'EUR', 'EUR', '2.0', '5', '2026-01-01T00:00:00Z', NULL)",
        "BALANCE VALUES (2001, 'EUR', 'EUR', '2.0', NULL, '2026-01-01T00:00:00Z', NULL)",
        "BALANCE VALUES (2001, 'EUR', 'EUR', '2', NULL, 'never', NULL)",
        "BALANCE VALUES (2001, 'BONUS', 'point', '7', NULL, '2026-01-01T00:00:00Z', NULL)",
        "SUB_BALANCE VALUES (2001, 'EUR', 1, '2', '2026-01-01T00:00:00Z', NULL)",
        "SUB_BALANCE VALUES (2001, 'EUR', 1, '2', '2026-01-01T00:00:00Z', '2027-01-01T00:00:00Z')",
    };
    std::string firstDump;
    std::vector<std::string> firstRejected;
    for (std::size_t turn = 0; turn < rows.size(); ++turn) {
        ReferenceDatabase database;
        for (auto const& row : rows) {
            database.run("INSERT INTO " + row + ";");
        }
        Loaded<BalanceData> const loaded(database);
        auto const dump = dumped([&](auto& out) { loaded.data.dump(out, {2001}); });
        if (turn == 0) {
            firstDump = dump;
            firstRejected = loaded.rejected;
            EXPECT_EQ(firstRejected.size(), 6U);
        }
        EXPECT_EQ(dump, firstDump);
        EXPECT_THAT(loaded.rejected, UnorderedElementsAreArray(firstRejected));
        std::rotate(rows.begin(), rows.begin() + 1, rows.end());
    }
}
