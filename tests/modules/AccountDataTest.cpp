#include "AccountData.h"

#include "ReferenceDatabase.h"

#include <gmock/gmock.h>

using MOD::AccountData;
using testing::HasSubstr;

namespace {

std::string const accounts = R"(
    INSERT INTO ACCOUNT VALUES
        (1000, 'ACTIVE', 'EUR', NULL), (1001, 'ACTIVE', 'EUR', 1000), (1002, 'CLOSED', 'USD', NULL);
    INSERT INTO CUSTOMER_IDENTIFIER VALUES ('491711234567', 1001), ('bare', 1002);
    INSERT INTO ACCOUNT_SERVICE VALUES
        (1001, 3002, '/service/mail', NULL, 'INACTIVE'),
        (1001, 3001, '/service/telco', '491711234567', 'ACTIVE');
    INSERT INTO ACCOUNT_PRODUCT VALUES
        (1001, 6001, 'VOICE_STD', 3001, '/event/session', 'ACTIVE', '2026-01-01T00:00:00Z', NULL),
        (1001, 6002, 'MAIL_STD', 3002, '*', 'ACTIVE', '2026-01-01T00:00:00Z', NULL),
        (1001, 6003, 'BASE', NULL, '*', 'CANCELLED', '1969-12-31T23:59:59Z',
            '2026-02-01T00:00:00Z'),
        (1001, 6004, 'ROAMING', 3001, '/event/sess', 'ACTIVE', '2026-01-01T00:00:00Z', NULL);
    INSERT INTO ACCOUNT_DISCOUNT VALUES
        (1001, 5001, 'FAMILY10', NULL, '/event/session/telco', 'ACTIVE', '2026-01-01T00:00:00Z',
            '2027-01-01T00:00:00Z');
)";

std::string dumpOf(AccountData const& data, AccountData::Asked const& asked) {
    return dumped([&](std::ostream& out) { data.dump(out, asked); });
}

} // namespace

TEST(AccountData, showsTheAccountAsOneEventSeesIt) {
    Loaded<AccountData> const loaded{ReferenceDatabase(accounts)};
    EXPECT_THAT(loaded.rejected, testing::IsEmpty());
    EXPECT_EQ(dumpOf(loaded.data, {"491711234567", 3001, "/service/telco", "/event/session/telco"}),
              R"(Customer identifier 491711234567
  Account 1001: status ACTIVE, currency EUR, parent account 1000

  Services (> is the service of the event)
      Service  Type            Login         Status
      -------  --------------  ------------  --------
    >    3001  /service/telco  491711234567  ACTIVE
         3002  /service/mail   none          INACTIVE

  Products for service 3001 and event type /event/session/telco: 2 of 4
    Product  Rate plan  Service  Event type      Status     Valid from            Valid to
    -------  ---------  -------  --------------  ---------  --------------------  --------------------
       6001  VOICE_STD     3001  /event/session  ACTIVE     2026-01-01T00:00:00Z  open
       6003  BASE           all  *               CANCELLED  1969-12-31T23:59:59Z  2026-02-01T00:00:00Z
  Others: 6002 MAIL_STD, 6004 ROAMING

  Discounts for service 3001 and event type /event/session/telco: 1 of 1
    Discount  Discount model  Service  Event type            Status  Valid from            Valid to
    --------  --------------  -------  --------------------  ------  --------------------  --------------------
        5001  FAMILY10            all  /event/session/telco  ACTIVE  2026-01-01T00:00:00Z  2027-01-01T00:00:00Z)");
}

TEST(AccountData, saysWhatItDoesNotHold) {
    Loaded<AccountData> const loaded{ReferenceDatabase(accounts)};
    EXPECT_EQ(dumpOf(loaded.data, {"49171", 3001, "/service/telco", "/event"}),
              "Customer identifier 49171: not in memory");
    EXPECT_EQ(dumpOf(loaded.data, {"bare", 3001, "/service/telco", "/event"}),
              R"(Customer identifier bare
  Account 1002: status CLOSED, currency USD, parent none

  Services (> is the service of the event)
      none
    Service 3001: not in memory

  Products for service 3001 and event type /event: 0 of 0
    none

  Discounts for service 3001 and event type /event: 0 of 0
    none)");
    EXPECT_THAT(dumpOf(loaded.data, {"491711234567", 3002, "/service/telco", "/event"}),
                HasSubstr("\n    Service 3002: the event has it as type /service/telco\n"));
}
