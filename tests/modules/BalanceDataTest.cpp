#include "BalanceData.h"

#include "ReferenceDatabase.h"

#include <gmock/gmock.h>

using MOD::BalanceData;

TEST(BalanceData, listsTheBalancesOfEachGroupAsked) {
    ReferenceDatabase const database(R"(
        INSERT INTO BALANCE_GROUP VALUES (2001, 1001), (2002, 1002);
        INSERT INTO BALANCE VALUES
            (2001, 'FREE_SECONDS', 'second', '-3600', NULL, '2026-01-01T00:00:00Z', NULL),
            (2001, 'EUR', 'EUR', '12.50', '100', '2026-01-01T00:00:00Z', '2027-01-01T00:00:00Z');
        INSERT INTO SUB_BALANCE VALUES
            (2001, 'EUR', 2, '0.000000000000000001', '2026-02-01T00:00:00Z', NULL),
            (2001, 'EUR', 1, '12.40', '2026-01-01T00:00:00Z', '2026-02-01T00:00:00Z');
    )");
    Loaded<BalanceData> const loaded(database);
    EXPECT_THAT(loaded.rejected, testing::IsEmpty());
    EXPECT_EQ(dumped([&](std::ostream& out) {
                  loaded.data.dump(out, {2002, 9, 2001});
              }),
              R"( 3 balance groups asked
  balance group 2002 of account 1002
    Balances
      none
    Sub-balances, in the units of their balances
      none
  balance group 9: not in memory
  balance group 2001 of account 1001
    Balances
      Resource      Amount  Credit limit  Unit    Valid from            Valid to
      ------------  ------  ------------  ------  --------------------  --------------------
      EUR            12.50           100  EUR     2026-01-01T00:00:00Z  2027-01-01T00:00:00Z
      FREE_SECONDS   -3600          none  second  2026-01-01T00:00:00Z  open
    Sub-balances, in the units of their balances
      Resource  Sub-balance                Amount  Valid from            Valid to
      --------  -----------  --------------------  --------------------  --------------------
      EUR                 1                 12.40  2026-01-01T00:00:00Z  2026-02-01T00:00:00Z
      EUR                 2  0.000000000000000001  2026-02-01T00:00:00Z  open
)");
}
