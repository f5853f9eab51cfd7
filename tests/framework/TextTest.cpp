// Strings, numbers and date-times from text.
#include "BAS/DateTime.h"
#include "BAS/String.h"
#include "RW/RWZone.h"

#include <gtest/gtest.h>

#include <climits>
#include <iomanip>
#include <optional>
#include <sstream>

TEST(String, SplitKeepsEmptyPiecesAndBlanks) {
    using Pieces = RWTValOrderedVector<BAS::String>;
    EXPECT_EQ(BAS::String("981, 982,,").split(','), (Pieces{"981", " 982", "", ""}));
    EXPECT_EQ(BAS::String("").split(','), Pieces{""});
    EXPECT_EQ(BAS::String(",").split(','), (Pieces{"", ""}));
}

TEST(String, NumberIsTheWholeText) {
    struct Case {
        char const* text;
        std::optional<long> number;
        std::optional<unsigned long> unsignedNumber;
    };
    Case const cases[] = {
        {"0", 0, 0},
        {"+0530", 530, 530},
        {"-0800", -800, {}},
        {"-0", 0, 0},
        {"007", 7, 7},
        {"", {}, {}},
        {"+", {}, {}},
        {"-", {}, {}},
        {"+-5", {}, {}},
        {"--5", {}, {}},
        {"++5", {}, {}},
        {" 5", {}, {}},
        {"5 ", {}, {}},
        {"5x", {}, {}},
        {"0x10", {}, {}},
        {"1e3", {}, {}},
        {"9223372036854775807", LONG_MAX, LONG_MAX},
        {"-9223372036854775808", LONG_MIN, {}},
        {"18446744073709551615", {}, ULONG_MAX},
        {"18446744073709551616", {}, {}},
    };
    for (auto const& c : cases) {
        BAS::String const text(c.text);
        long number = 77;
        EXPECT_EQ(text.toNum(number), c.number.has_value()) << c.text;
        EXPECT_EQ(number, c.number.value_or(77)) << c.text;
        unsigned long unsignedNumber = 77;
        EXPECT_EQ(text.toNum(unsignedNumber), c.unsignedNumber.has_value()) << c.text;
        EXPECT_EQ(unsignedNumber, c.unsignedNumber.value_or(77)) << c.text;
        long byLocale = 77;
        EXPECT_EQ(BAS::String::localeCM.stringToNum(text, &byLocale), c.number.has_value());
        EXPECT_EQ(byLocale, number);
    }
    int small = 77;
    EXPECT_FALSE(BAS::String("2147483648").toNum(small));
    EXPECT_EQ(small, 77);
    EXPECT_TRUE(BAS::String("-2147483648").toNum(small));
    EXPECT_EQ(small, INT_MIN);
}

TEST(String, IsWrittenByteForByteAndUsesTheWidthUp) {
    std::ostringstream out;
    std::string const bytes("a\0\xff", 3);
    out << std::setfill('#') << std::setw(9) << BAS::String(bytes) << 7;
    EXPECT_EQ(out.str(), bytes + "7");
}

TEST(String, OrderIsByteWise) {
    EXPECT_LT(BAS::String("B"), BAS::String("a"));
    EXPECT_LT(BAS::String("a"), BAS::String("\xc3\xa4"));
    EXPECT_LT(BAS::String("ab"), BAS::String(std::string("ab\0", 3)));
}

TEST(DateTime, TextIsReadAsUtc) {
    struct Case {
        char const* text;
        unsigned long seconds;
    };
    auto const unixEpoch = BAS::DateTime::rwToUnixSecsCM;
    EXPECT_EQ(unixEpoch, 2208988800UL);
    Case const cases[] = {{"19000101000000", 0},
                          {"19000101000001", 1},
                          {"19000301000000", 59UL * 86400},
                          {"19700101000000", unixEpoch},
                          {"20000229235959", unixEpoch + 951868799},
                          {"20261121093000", unixEpoch + 1795253400},
                          {"99991231235959", unixEpoch + 253402300799},
                          {"18991231235959", 0},
                          {"20260229000000", 0},
                          {"20261301000000", 0},
                          {"20260100000000", 0},
                          {"20260101240000", 0},
                          {"20260101006000", 0},
                          {"20260101000060", 0},
                          {"2026010100000", 0},
                          {"202601010000000", 0},
                          {"2026-1-1 00:00", 0},
                          {"+2026010100000", 0},
                          {"", 0}};
    for (auto const& c : cases) {
        EXPECT_EQ(BAS::DateTime::fromText(c.text).seconds(), c.seconds) << c.text;
    }
}
