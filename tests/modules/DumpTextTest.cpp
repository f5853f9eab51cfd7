#include "DumpText.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>

using namespace MOD;

namespace {

struct Item {
    Text name;
    std::uint64_t number = 0;
};

constexpr ListColumn<Item> itemList[] = {{"Name", &Item::name}, {"No", &Item::number}};

} // namespace

TEST(DumpText, leavesOnlyItsFirstWordToTheStream) {
    TextPool const texts;
    DumpText text(texts);
    text.line("{} things asked", 7);
    text.line("  {} and {}", 255, 1.5);
    struct {
        int width;
        char fill;
        std::ios::fmtflags flags;
        char const* written;
    } const cases[] = {
        {0, ' ', {}, "7 things asked\n  255 and 1.5\n"},
        {2, ' ', {}, " 7 things asked\n  255 and 1.5\n"},
        {4, '*', std::ios::left, "7*** things asked\n  255 and 1.5\n"},
        {3, '0', std::ios::hex | std::ios::showbase | std::ios::scientific | std::ios::showpos,
         "007 things asked\n  255 and 1.5\n"},
    };
    for (auto const& [width, fill, flags, written] : cases) {
        std::ostringstream out;
        out.flags(flags);
        out << std::setfill(fill) << std::setw(width);
        text.writeLines(out);
        EXPECT_EQ(out.str(), written);
        EXPECT_EQ(out.width(), 0);
    }
    std::ostringstream out;
    text.writeUpToLastLineEnd(out);
    EXPECT_EQ(out.str(), "7 things asked\n  255 and 1.5");
}

TEST(DumpText, alignsCharactersNotBytesAndShowsControlCharacters) {
    TextPool texts;
    std::vector<Item> items;
    TextIntake intake(texts);
    items.push_back({intake.intern("Jörg"), 7});
    items.push_back({intake.intern("Müller-Lüdenscheidt"), 12345});
    items.push_back({intake.intern("a\nb\x7f\x1b[m"), 0});
    DumpText text(texts);
    text.list<Item>(2, itemList, items, &items[1]);
    text.list<Item>(2, itemList, {});
    std::ostringstream out;
    text.writeLines(out);
    EXPECT_EQ(out.str(), "  Name                    No\n"
                         "  -------------------  -----\n"
                         "  Jörg                     7\n"
                         "> Müller-Lüdenscheidt  12345\n"
                         "  a\\x0ab\\x7f\\x1b[m         0\n"
                         "  none\n");
}
