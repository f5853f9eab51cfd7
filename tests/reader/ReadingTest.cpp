#include "DumpFile.h"
#include "text/ModuleText.h"

#include <gmock/gmock.h>

namespace reader {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string joinedPieces(std::string const& text) {
    std::string joined;
    forEachEventOf(text, [&](EventText const& event) { joined += event.text.bytes(); });
    return joined;
}

std::string reportOf(std::string const& file) {
    return textOf(std::filesystem::path(DEMO_DUMP).parent_path() / file);
}

TEST(Reading, givesBackEveryByteOfAFile) {
    auto const dump = demoDump();
    for (auto const& text : {std::string(), dump, reportOf("events.txt"), "before\n" + dump,
                             dump + dump, reportOf("events.txt") + dump + "behind\n"}) {
        EXPECT_EQ(joinedPieces(text), text);
    }
    // Larger than the pieces in which files are read.
    std::string large;
    for (int i = 0; i < 50; ++i) {
        large += dump;
    }
    EXPECT_EQ(joinedPieces(large), large);
    EXPECT_THROW(joinedPieces("no dump\n"), InputError);
}

TEST(Reading, tellsOfAnotherNumberThanTheNext) {
    std::vector<std::string> notices;
    auto const ignore = [](EventText const&) {};
    auto const dump = demoDump();
    forEachEventOf(dump, ignore, &notices);
    EXPECT_THAT(notices, IsEmpty());
    forEachEventOf(edited(dump, "Begin: 2\n", "Begin: 7\n"), ignore, &notices);
    EXPECT_THAT(notices, ElementsAre(testing::EndsWith("event 7 where event 2 was expected"),
                                     testing::EndsWith("event 3 where event 8 was expected")));
    notices.clear();
    forEachEventOf(dump + dump, ignore, &notices);
    EXPECT_THAT(notices, ElementsAre(testing::EndsWith("a dump begins anew within the file")));
}

TEST(Reading, splitsTheKeyLineAtTheLastLabel) {
    FactReader reader;
    forEachEventOf(
        edited(demoDump(), "Identifier= 491713920003", "Identifier= A   Service Code = B"),
        [&](EventText const& event) {
            if (event.number == 1) {
                auto const& facts = reader.read(event);
                EXPECT_EQ(facts.customer.text, "A   Service Code = B");
                EXPECT_EQ(facts.service.text, "SMS");
            }
        });
}

// Wherever a text is cut, that is told, and nothing is found besides that the whole text doesn't
// have; but between two events nobody can know.
void expectCutsToBeFound(std::string const& whole, std::size_t firstSize, std::size_t step,
                         std::string const& beginOfEvent) {
    auto const findings = findingsOf(whole);
    for (auto size = firstSize; size < whole.size(); size += step) {
        auto const text = whole.substr(0, size);
        std::size_t cuts = 0;
        FactReader reader;
        auto const visit = [&](EventText const& event) {
            cuts += !event.isOutside && reader.read(event).cutLine != 0 ? 1 : 0;
        };
        forEachEventOf(text, visit);
        EXPECT_EQ(cuts, whole.substr(size).starts_with(beginOfEvent) ? 0U : 1U)
            << "cut at " << size;
        for (auto const& finding : findingsOf(text)) {
            EXPECT_TRUE(findings.contains(finding) || finding.starts_with("cut-short "))
                << finding << " in a text cut at " << size;
        }
    }
}

// The lines with which the second event begins, byte by byte.
void expectCutsInABeginToBeFound(std::string const& whole, std::string const& beginOfEvent) {
    auto const second = whole.find(beginOfEvent, 72);
    constexpr std::size_t lines = 110;
    expectCutsToBeFound(whole.substr(0, second + lines), second, 1, beginOfEvent);
}

TEST(Reading, findsWhereADumpWasCut) {
    expectCutsToBeFound(demoDump(), 8, 97, "Begin: ");
    expectCutsInABeginToBeFound(demoDump(), "Begin: ");
}

TEST(Reading, findsWhereAReportWasCut) {
    auto const begin = std::string(70, '-') + "\nEvent type= ";
    expectCutsToBeFound(reportOf("events.txt"), 72 + begin.size(), 47, begin);
    expectCutsInABeginToBeFound(reportOf("events.txt"), begin);
}

std::vector<std::string_view> numbersOf(std::vector<UsedItem> const& items) {
    std::vector<std::string_view> numbers;
    for (auto const& item : items) {
        numbers.push_back(item.object.text);
    }
    return numbers;
}

// A line end within a value is one line too many, and hides none of those after it.
TEST(Reading, goesOnAfterALineAmongItems) {
    struct {
        char const* from;
        char const* to;
        char const* unplaced;
    } const lineEnds[] = {
        {"name   : PREPAID_NIGHT", "name   : PREPAID_\nNIGHT", "NIGHT"},
        {"name   : WEEKEND_FREE", "name   : WEEKEND_\nFREE", "FREE"},
        {"name   : FAMILY10", "name   : FAM\nILY10", "ILY10"},
        {"name   : SPON_TEEN_SMS", "name   : SPON\n_TEEN_SMS", "_TEEN_SMS"},
        {"    Owner Type : /group/sharing", "    Owner Type : /group\n/sharing", "/sharing"},
    };
    for (auto const& edit : lineEnds) {
        FactReader reader;
        std::vector<std::string> unplaced;
        forEachEventOf(edited(demoDump(), edit.from, edit.to), [&](EventText const& text) {
            auto const& event = reader.read(text);
            for (auto const& line : event.unplaced) {
                unplaced.emplace_back(line.text);
            }
            if (event.number == 1) {
                EXPECT_THAT(numbersOf(event.owners[0].items), ElementsAre("5001", "6001"));
                EXPECT_EQ(event.owners[0].balanceGroup.text, "2001");
                EXPECT_EQ(event.owners[0].memory.discountModels.size(), 2U);
            }
            if (event.number == 3) {
                EXPECT_THAT(numbersOf(event.ownDiscounts), ElementsAre("5020", "5021"));
                EXPECT_EQ(event.memory.discountModels.size(), 2U);
            }
            EXPECT_THAT(event.foreignTexts, IsEmpty());
        });
        EXPECT_THAT(unplaced, ElementsAre(edit.unplaced)) << edit.to;
    }
}

TEST(Reading, takesListsApartByTheirRulers) {
    TableLayouts layouts;
    ModuleText text;
    LineIndex const lines("  Names of the \xc3\xbc"
                          "bliche\n"
                          "    Nam\xc3\xa9   Number\n"
                          "    -----  ------\n"
                          "    J\xc3\xbcrgn       7\n"
                          "  > \xff x         8\n"
                          "  Others: 9 z\n");
    text.read(lines, 10, layouts);
    ASSERT_EQ(text.tables().size(), 1U);
    auto const& table = text.tables()[0];
    EXPECT_EQ(table.heading(0), "Nam\xc3\xa9");
    ASSERT_EQ(table.rowCount, 2U);
    EXPECT_EQ(table.cell(0, "Number"), "7");
    EXPECT_EQ(table.cell(1, "Number"), "8");
    EXPECT_EQ(table.markedRow, 1U);
    EXPECT_EQ(table.lineOf(1), 14U);
    EXPECT_EQ(text.items().back().text, "  Others: 9 z");
}

} // namespace

} // namespace reader
