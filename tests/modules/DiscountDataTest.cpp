#include "DiscountData.h"

#include "ReferenceDatabase.h"

#include <gmock/gmock.h>

using MOD::DiscountData;

namespace {

std::string const discounts = R"(
    INSERT INTO DISCOUNT_MODEL VALUES ('FAMILY10', 'Ten percent'), ('EMPTY', NULL);
    INSERT INTO DISCOUNT_RULE VALUES ('FAMILY10', 1, 'ALL_USE', '*', 'EUR');
    INSERT INTO DISCOUNT_STEP VALUES
        ('FAMILY10', 1, 2, '50', NULL, '12.5'), ('FAMILY10', 1, 1, '0', '50', '10');
    INSERT INTO DISCOUNT_OBJECT VALUES
        (5002, '/account', 1001, 1001, 'EMPTY', 'CANCELLED', '2026-01-01T00:00:00Z',
            '2026-02-01T00:00:00Z', '2025-12-31T23:59:59Z'),
        (5001, '/group/sharing', 4001, 1001, 'FAMILY10', 'ACTIVE', '2026-01-01T00:00:00Z', NULL,
            '2025-12-24T18:00:00Z');
    INSERT INTO SPONSORSHIP_OBJECT VALUES
        (5001, '/group/sponsor', 4002, 1002, 'FAMILY10', 'ACTIVE', '2026-03-01T00:00:00Z', NULL,
            '2026-03-01T00:00:00Z');
)";

} // namespace

TEST(DiscountData, listsTheObjectsAskedInTheirOrder) {
    Loaded<DiscountData> const loaded{ReferenceDatabase(discounts)};
    EXPECT_THAT(loaded.rejected, testing::IsEmpty());
    EXPECT_EQ(dumped([&](std::ostream& out) {
                  loaded.data.dumpDiscounts(out, {5001, 9, 5002, 5001});
              }),
              R"( 4 discount objects asked
    Object  Model     Owner type      Owner  Account  Status     Valid from            Valid to              Purchased
    ------  --------  --------------  -----  -------  ---------  --------------------  --------------------  --------------------
      5001  FAMILY10  /group/sharing   4001     1001  ACTIVE     2026-01-01T00:00:00Z  open                  2025-12-24T18:00:00Z
      5002  EMPTY     /account         1001     1001  CANCELLED  2026-01-01T00:00:00Z  2026-02-01T00:00:00Z  2025-12-31T23:59:59Z
      5001  FAMILY10  /group/sharing   4001     1001  ACTIVE     2026-01-01T00:00:00Z  open                  2025-12-24T18:00:00Z
    discount object 9: not in memory
)");
    EXPECT_EQ(dumped([&](std::ostream& out) {
                  loaded.data.dumpSponsorships(out, {5001, 5002});
              }),
              R"( 2 sponsorship objects asked
    Object  Model     Owner type      Owner  Account  Status  Valid from            Valid to  Purchased
    ------  --------  --------------  -----  -------  ------  --------------------  --------  --------------------
      5001  FAMILY10  /group/sponsor   4002     1002  ACTIVE  2026-03-01T00:00:00Z  open      2026-03-01T00:00:00Z
    sponsorship object 5002: not in memory
)");
}

TEST(DiscountData, listsTheRulesAndStepsOfEachModelAsked) {
    Loaded<DiscountData> const loaded{ReferenceDatabase(discounts)};
    EXPECT_EQ(dumped([&](std::ostream& out) {
                  loaded.data.dumpModels(out, {"FAMILY10", "FAMILY", "EMPTY"});
              }),
              R"( 3 discount models asked
    discount model FAMILY10: Ten percent
      Rules
        Rule  Name     Impact category  Unit
        ----  -------  ---------------  ----
           1  ALL_USE  *                EUR
      Steps, thresholds in the units of their rules
        Rule  Step  From  Below  Share %
        ----  ----  ----  -----  -------
           1     1     0     50       10
           1     2    50   open     12.5
    discount model FAMILY: not in memory
    discount model EMPTY
      Rules
        none
      Steps, thresholds in the units of their rules
        none
)");
}
