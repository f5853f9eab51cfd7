#include "PriceData.h"

#include "ReferenceDatabase.h"

#include <gmock/gmock.h>

using MOD::PriceData;

TEST(PriceData, listsStepsAndImpactsOfEachModelAsked) {
    ReferenceDatabase const database(R"(
        INSERT INTO PRICEMODEL VALUES ('PM_VOICE', 'Standard voice', 'EUR'), ('PM_VO', NULL, 'USD');
        INSERT INTO PRICEMODEL_STEP VALUES
            ('PM_VOICE', 10, 'second', '60', NULL, '0.0015', '1', '2026-01-01T00:00:00Z', NULL),
            ('PM_VOICE', 2, 'second', '0', '60', '0.10', '60', '2026-01-01T00:00:00Z',
                '2026-07-01T00:00:00Z');
        INSERT INTO PRICEMODEL_IMPACT VALUES
            ('PM_VOICE', 10, 1, 'EUR', 'EUR', '0.0015'),
            ('PM_VOICE', 2, 2, 'BONUS', 'point', '-1'),
            ('PM_VOICE', 2, 1, 'EUR', 'EUR', '0.10');
    )");
    Loaded<PriceData> const loaded(database);
    EXPECT_THAT(loaded.rejected, testing::IsEmpty());
    EXPECT_EQ(dumped([&](std::ostream& out) {
                  loaded.data.dump(out, {"PM_VOICE", "PM_V", "PM_VO"});
              }),
              R"( 3 price models asked
  price model PM_VOICE: Standard voice
    Steps, amounts in EUR
      Step  From  Below  Amount  Per  Unit    Valid from            Valid to
      ----  ----  -----  ------  ---  ------  --------------------  --------------------
         2     0     60    0.10   60  second  2026-01-01T00:00:00Z  2026-07-01T00:00:00Z
        10    60   open  0.0015    1  second  2026-01-01T00:00:00Z  open
    Balance impacts, for each quantity of their steps
      Step  Impact  Resource  Amount  Unit
      ----  ------  --------  ------  -----
         2       1  EUR         0.10  EUR
         2       2  BONUS         -1  point
        10       1  EUR       0.0015  EUR
  price model PM_V: not in memory
  price model PM_VO
    Steps, amounts in USD
      none
    Balance impacts, for each quantity of their steps
      none)");
}
