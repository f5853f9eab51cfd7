#include "ConnectionString.h"
#include "Decimal.h"
#include "UtcTime.h"

#include <gtest/gtest.h>

using MOD::ConnectionString;
using MOD::Decimal;
using MOD::UtcTime;

namespace {

constexpr char const* refused = "(refused)";

struct TextCase {
    char const* text;
    char const* shown;
};

template <class Value>
std::string shown(char const* text) {
    auto const value = Value::fromText(text);
    return value ? value->text() : refused;
}

} // namespace

TEST(Decimal, keepsEveryDigitOfATextAndRefusesWhatIsNoDecimal) {
    TextCase const cases[] = {
        {"0", "0"},
        {"12.50", "12.50"},
        {"-0.0000012", "-0.0000012"},
        {"+3", "3"},
        {"007.10", "7.10"},
        {"0.1", "0.1"},
        {"-0", "0"},
        {"999999999999999999", "999999999999999999"},
        {"-0.999999999999999999", "-0.999999999999999999"},
        {"0000000000000000000.5", "0.5"},
        {"1000000000000000000", refused},
        {"0.1234567890123456789", refused},
        {"", refused},
        {"-", refused},
        {".5", refused},
        {"5.", refused},
        {"1,5", refused},
        {"1e3", refused},
        {" 1", refused},
        {"1.2.3", refused},
        {"--1", refused},
        {"+-1", refused},
    };
    for (auto const& [text, expected] : cases) {
        EXPECT_EQ(shown<Decimal>(text), expected) << text;
    }
}

TEST(Decimal, comparesByValueWhateverTheScale) {
    auto const decimal = [](char const* text) { return Decimal::fromText(text).value(); };
    char const* const rising[] = {"-999999999999999999",
                                  "-1.01",
                                  "-1.0",
                                  "-0.000000000000000001",
                                  "0",
                                  "0.999999999999999999",
                                  "1",
                                  "999999999999999999"};
    for (std::size_t i = 1; i < std::size(rising); ++i) {
        EXPECT_LT(decimal(rising[i - 1]), decimal(rising[i])) << rising[i];
    }
    EXPECT_EQ(decimal("1.5"), decimal("1.50"));
}

TEST(UtcTime, takesTheTimesOfTheCalendarAndNoOthers) {
    TextCase const cases[] = {
        {"2026-01-31T23:59:59Z", "2026-01-31T23:59:59Z"},
        {"2024-02-29T00:00:00Z", "2024-02-29T00:00:00Z"},
        {"1969-12-31T23:59:59Z", "1969-12-31T23:59:59Z"},
        {"0001-01-01T00:00:00Z", "0001-01-01T00:00:00Z"},
        {"9999-12-31T23:59:59Z", "9999-12-31T23:59:59Z"},
        {"2026-02-29T00:00:00Z", refused},
        {"2026-13-01T00:00:00Z", refused},
        {"2026-00-01T00:00:00Z", refused},
        {"2026-01-01T24:00:00Z", refused},
        {"2026-01-01T00:60:00Z", refused},
        {"2026-01-01T00:00:60Z", refused},
        {"2026-01-01T00:00:00", refused},
        {"2026-01-01 00:00:00Z", refused},
        {"2026-1-01T00:00:000Z", refused},
        {"20260101000000", refused},
        {"", refused},
    };
    for (auto const& [text, expected] : cases) {
        EXPECT_EQ(shown<UtcTime>(text), expected) << text;
    }
}

TEST(ConnectionString, findsTheFileOfSqliteAndLeavesOtherDatabasesAlone) {
    struct {
        char const* text;
        char const* opened;
        char const* file;
    } const cases[] = {
        {"sqlite3://db=a.db", R"(sqlite3://db="/reg/a.db" readonly="true")", "/reg/a.db"},
        {"sqlite3://dbname=sub/a.db", R"(sqlite3://dbname="/reg/sub/a.db" readonly="true")",
         "/reg/sub/a.db"},
        {"sqlite3://db=/abs/a.db", R"(sqlite3://db="/abs/a.db" readonly="true")", "/abs/a.db"},
        {"sqlite3://a.db", R"(sqlite3://db="/reg/a.db" readonly="true")", "/reg/a.db"},
        {"sqlite3://db=\"my data/a.db\"  timeout=5",
         R"(sqlite3://db="/reg/my data/a.db" timeout="5" readonly="true")", "/reg/my data/a.db"},
        {"sqlite3:// db='a b.db' readonly=true", R"(sqlite3://db="/reg/a b.db" readonly="true" )",
         "/reg/a b.db"},
        {"sqlite3://timeout=5", R"(sqlite3://timeout="5" readonly="true")", ""},
        {"postgresql://dbname=db.sqlite host=/run", "postgresql://dbname=db.sqlite host=/run",
         nullptr},
    };
    for (auto const& [text, opened, file] : cases) {
        ConnectionString const ready(text, "/reg");
        EXPECT_EQ(ready.text, opened);
        ASSERT_EQ(ready.file.has_value(), file != nullptr) << text;
        EXPECT_EQ(ready.file.value_or(""), file == nullptr ? "" : file);
    }
}
