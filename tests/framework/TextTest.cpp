// Strings: how they are written and ordered.
#include "BAS/String.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>

TEST(String, TakesATextOfItsOwnLengthWhole) {
    for (std::size_t length = 0; length <= 40; ++length) {
        BAS::String text(std::string(length, 'x'));
        std::string other;
        for (std::size_t i = 0; i < length; ++i) {
            other += static_cast<char>('0' + i);
        }
        text = BAS::String(other);
        BAS::String copy(std::string(length, 'y'));
        copy = text;
        EXPECT_EQ(copy.str(), other);
        auto const& same = copy;
        copy = same;
        EXPECT_EQ(copy.str(), other);
    }
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
