#include "RateplanData.h"

#include "ReferenceDatabase.h"

#include <gmock/gmock.h>

using MOD::RateplanData;

namespace {

std::string const rateplans = R"(
    INSERT INTO RATEPLAN VALUES
        ('VOICE_STD', 3, 12, 'PEAK', '2026-01-01T00:00:00Z', NULL),
        ('VOICE_STD', 2, 12, 'FLAT', '2025-01-01T00:00:00Z', '2026-01-01T00:00:00Z');
    INSERT INTO RATEPLAN_ENTRY VALUES
        ('VOICE_STD', 3, 10, '*', '*', '*', 'PM_REST'),
        ('VOICE_STD', 3, 1, 'TEL', 'GOLD', 'DOMESTIC', 'PM_GOLD'),
        ('VOICE_STD', 3, 2, 'TEL', '*', 'DOMESTIC', 'PM_VOICE'),
        ('VOICE_STD', 3, 3, 'TEL', '*', 'ROAMING', 'PM_ROAM'),
        ('VOICE_STD', 2, 1, '*', '*', '*', 'PM_OLD');
)";

std::string dumpOf(RateplanData const& data, RateplanData::Asked const& asked) {
    return dumped([&](std::ostream& out) { data.dump(out, asked); });
}

} // namespace

TEST(RateplanData, listsTheEntriesThatMatch) {
    Loaded<RateplanData> const loaded{ReferenceDatabase(rateplans)};
    EXPECT_THAT(loaded.rejected, testing::IsEmpty());
    EXPECT_EQ(dumpOf(loaded.data, {"VOICE_STD", 3, "TEL", "SILVER", "DOMESTIC"}),
              R"(Rate plan VOICE_STD version 3
  Rate plan id 12, model PEAK, valid from 2026-01-01T00:00:00Z to open

  Entries, all charged, for service code TEL, service class SILVER and impact category DOMESTIC: 2 of 4
    Entry  Service code  Service class  Impact category  Price model
    -----  ------------  -------------  ---------------  -----------
        2  TEL           *              DOMESTIC         PM_VOICE
       10  *             *              *                PM_REST)");
}

TEST(RateplanData, matchesEveryColumnAndTakesTheStarForAll) {
    Loaded<RateplanData> const loaded{ReferenceDatabase(rateplans)};
    struct {
        RateplanData::Asked asked;
        std::vector<std::string> priceModels;
    } const cases[] = {
        {{"VOICE_STD", 3, "TEL", "GOLD", "DOMESTIC"}, {"PM_GOLD", "PM_VOICE", "PM_REST"}},
        {{"VOICE_STD", 3, "TEL", "*", "DOMESTIC"}, {"PM_GOLD", "PM_VOICE", "PM_REST"}},
        {{"VOICE_STD", 3, "TEL", "GOLD", "ROAMING"}, {"PM_ROAM", "PM_REST"}},
        {{"VOICE_STD", 3, "SMS", "GOLD", "DOMESTIC"}, {"PM_REST"}},
        {{"VOICE_STD", 2, "TEL", "GOLD", "DOMESTIC"}, {"PM_OLD"}},
    };
    for (auto const& [asked, priceModels] : cases) {
        auto const text = dumpOf(loaded.data, asked);
        std::vector<std::string> found;
        for (auto at = text.find("PM_"); at != std::string::npos; at = text.find("PM_", at + 1)) {
            found.push_back(text.substr(at, text.find('\n', at) - at));
        }
        EXPECT_EQ(found, priceModels) << text;
    }
}

TEST(RateplanData, namesTheVersionsThatItHoldsInstead) {
    Loaded<RateplanData> const loaded{ReferenceDatabase(rateplans)};
    EXPECT_EQ(dumpOf(loaded.data, {"VOICE_STD", 4, "TEL", "*", "DOMESTIC"}),
              "Rate plan VOICE_STD version 4: not in memory\n  Versions in memory: 2, 3");
    EXPECT_EQ(dumpOf(loaded.data, {"VOICE", -1, "TEL", "*", "DOMESTIC"}),
              "Rate plan VOICE version -1: not in memory");
}
