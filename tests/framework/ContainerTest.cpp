// EDR containers: reads by handle, by position and through iterators.
#include "BAS/Status.h"
#include "EDR/Factory.h"
#include "EDR/Iterator.h"
#include "support/EdrText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>

namespace {

using support::EdrStep;
using testing::ElementsAre;

// Blocks A and B below the root, A.X and A.X.Y below A; each with a field T.
class Edr : public testing::Test {
protected:
    Edr() {
        for (auto const* path :
             {"DETAIL.T", "DETAIL.A.T", "DETAIL.A.X.T", "DETAIL.A.X.Y.T", "DETAIL.B.T"}) {
            support::describeField(description, path);
        }
        support::describeField(description, "DETAIL.A.NUMBER", EDR::FieldType::number);
        support::describeField(description, "DETAIL.A.TIME", EDR::FieldType::dateTime);
        container = std::make_unique<EDR::Container>(description);
    }
    void fill(std::vector<EdrStep> const& steps) { support::fill(*container, description, steps); }
    EDR::Index field(std::string const& path) const {
        return description.findField("DETAIL." + path);
    }
    EDR::BlockIndex block(std::string const& path) const {
        return description.findBlock("DETAIL." + path);
    }
    std::string read(std::string const& path) const {
        return container->getString(field(path)).str();
    }
    std::string read(std::string const& path, RWTValOrderedVector<long> const& positions) const {
        return container->getString(field(path), positions).str();
    }
    // Walks the path's blocks outermost first and notes the field T of each.
    std::vector<std::string> walk(std::vector<std::string> const& paths) {
        EDR::Iterator iterator;
        EXPECT_TRUE(iterator.setIndex(block(paths.back())));
        EXPECT_TRUE(iterator.reset(container.get()));
        std::vector<std::string> seen;
        walk(iterator, paths, 0, seen);
        return seen;
    }
    void walk(EDR::Iterator& iterator, std::vector<std::string> const& paths, std::size_t level,
              std::vector<std::string>& seen) {
        while (level < paths.size() && iterator(block(paths[level]))) {
            seen.push_back(iterator.getString(field(paths[level] + ".T")).str());
            walk(iterator, paths, level + 1, seen);
        }
    }

    EDR::Description description;
    std::unique_ptr<EDR::Container> container;
};

std::vector<EdrStep> const nested = {
    {"T", "root"},         {"A"},     {"A.T", "a0"},        {"A.X"},
    {"A.X.T", "a0x0"},     {"A.X"},   {"A.X.T", "a0x1"},    {"A.X.Y"},
    {"A.X.Y.T", "a0x1y0"}, {"A"},     {"A.T", "a1"},        {"A"},
    {"A.T", "a2"},         {"A.X"},   {"A.X.T", "a2x0"},    {"A.X.Y"},
    {"A.X.Y.T", "a2x0y0"}, {"A.X.Y"}, {"A.X.Y.T", "a2x0y1"}};

} // namespace

TEST_F(Edr, UnpositionedReadTakesTheFirstBlockAtEveryLevel) {
    fill(nested);
    EXPECT_EQ(read("T"), "root");
    EXPECT_EQ(read("A.T"), "a0");
    EXPECT_EQ(read("A.X.T"), "a0x0");
    // The first X has no Y, whatever the others have.
    EXPECT_EQ(read("A.X.Y.T"), "");
    EXPECT_EQ(read("B.T"), "");
    fill({{"A"}, {"A"}, {"A.X"}, {"A.X.T", "a1x0"}});
    EXPECT_EQ(read("A.X.T"), "");
    EXPECT_EQ(container->getString(EDR::Index()), "");
}

TEST_F(Edr, PositionedReadTakesOnePositionALevelOutermostFirst) {
    fill(nested);
    EXPECT_EQ(read("T", {5, 5}), "root");
    EXPECT_EQ(read("A.T", {2}), "a2");
    EXPECT_EQ(read("A.T", {1, 9, 9}), "a1");
    EXPECT_EQ(read("A.X.T", {0, 1}), "a0x1");
    EXPECT_EQ(read("A.X.T", {2}), "a2x0");
    EXPECT_EQ(read("A.X.Y.T", {2, 0, 1}), "a2x0y1");
    EXPECT_EQ(read("A.X.Y.T", {0, 1}), "a0x1y0");
    for (auto const& outOfRange : {RWTValOrderedVector<long>{3},
                                   {-1},
                                   {1, 0},
                                   {0, 2},
                                   {0, -1},
                                   {2, 0, 2},
                                   {2147483648L * 4}}) {
        EXPECT_EQ(read("A.X.Y.T", outOfRange), "");
    }
    EXPECT_EQ(container->getString(EDR::Index(), {0}), "");
}

TEST_F(Edr, NumbersAndTimesAreReadByTypeOrFromTheText) {
    fill({{"T", "42"}, {"A"}, {"A.NUMBER", "-7"}, {"A.TIME", "19700101000000"}, {"A.T", "x"}});
    EXPECT_EQ(container->getLong(field("A.NUMBER")), -7);
    EXPECT_EQ(container->getLong(field("T")), 42);
    EXPECT_EQ(container->getLong(field("A.T")), 0);
    EXPECT_EQ(container->getLong(field("B.T")), 0);
    EXPECT_EQ(container->getDateTime(field("A.TIME")).seconds(), BAS::DateTime::rwToUnixSecsCM);
    EXPECT_EQ(container->getDateTime(field("T")).seconds(), 0U);
    fill({{"T", "19700101000001"}, {"A"}, {"A.NUMBER", "7x"}, {"A.TIME", "never"}});
    EXPECT_EQ(container->getDateTime(field("T")).seconds(), BAS::DateTime::rwToUnixSecsCM + 1);
    EXPECT_EQ(container->getLong(field("A.NUMBER")), 0);
    EXPECT_EQ(read("A.NUMBER"), "7x");
    EXPECT_EQ(container->getDateTime(field("A.TIME")).seconds(), 0U);
    EXPECT_EQ(container->getDateTime(field("B.T")).seconds(), 0U);
}

TEST_F(Edr, BlockNeedsItsParent) {
    container->clear(EDR::detailRecord);
    EXPECT_THROW(container->addBlock(block("A.X")), std::logic_error);
    EXPECT_THROW(container->setField(field("A.T"), "x"), std::logic_error);
}

TEST_F(Edr, IteratorWalksTheBlocksOfTheCurrentParent) {
    fill(nested);
    EXPECT_THAT(walk({"A", "A.X", "A.X.Y"}), ElementsAre("a0", "a0x0", "a0x1", "a0x1y0", "a1", "a2",
                                                         "a2x0", "a2x0y0", "a2x0y1"));
    EXPECT_THAT(walk({"A"}), ElementsAre("a0", "a1", "a2"));
    // A parent that was never stepped counts as its first block.
    EXPECT_THAT(walk({"A.X"}), ElementsAre("a0x0", "a0x1"));
    EXPECT_THAT(walk({"A.X.Y"}), ElementsAre());
    EXPECT_THAT(walk({"B"}), ElementsAre());
}

TEST_F(Edr, FieldIsReadAtTheCursorOfItsOwnKind) {
    fill({{"T", "root"},
          {"A"},
          {"A.T", "a0"},
          {"A"},
          {"A.T", "a1"},
          {"A.NUMBER", "5"},
          {"B"},
          {"B.T", "b0"},
          {"B"},
          {"B.T", "b1"}});
    EDR::Iterator a;
    EDR::Iterator b;
    ASSERT_TRUE(a.setIndex(block("A")) && b.setIndex(block("B")));
    ASSERT_TRUE(a.reset(container.get()));
    EXPECT_EQ(a.getString(field("A.T")), "");
    EXPECT_EQ(a.getString(field("T")), "root");
    ASSERT_TRUE(a(block("A")) && a(block("A")));
    EXPECT_EQ(a.getLong(field("A.NUMBER")), 5);
    EXPECT_FALSE(a(block("A")));
    EXPECT_EQ(a.getString(field("A.T")), "");
    EXPECT_FALSE(a(block("A")));
    // The other kind's cursor is where the other iterator put it.
    ASSERT_TRUE(b.reset(container.get()));
    ASSERT_TRUE(b(block("B")) && b(block("B")));
    EXPECT_EQ(a.getString(field("B.T")), "b1");
    EXPECT_EQ(b.getString(field("A.T")), "");
    // Placing an iterator anew sends its own kind back, and no other.
    ASSERT_TRUE(a.reset(container.get()));
    ASSERT_TRUE(a(block("A")));
    EXPECT_EQ(b.getString(field("A.T")), "a0");
    EXPECT_EQ(a.getString(field("B.T")), "b1");
    // Filled anew, the container has its cursors before every block.
    fill({{"A"}, {"A.T", "new"}});
    EXPECT_EQ(a.getString(field("A.T")), "");
}

// Blocks that are added while an iterator stands on one don't move it.
TEST_F(Edr, IteratorStaysOnItsBlockWhileTheContainerGrows) {
    fill({{"A"}, {"A.T", "a0"}, {"A.X"}, {"A.X.T", "x0"}});
    EDR::Iterator iterator;
    ASSERT_TRUE(iterator.setIndex(block("A.X")) && iterator.reset(container.get()));
    ASSERT_TRUE(iterator(block("A")) && iterator(block("A.X")));
    for (int i = 1; i <= 100; ++i) {
        container->addBlock(block("A.X"));
        container->setField(field("A.X.T"), std::string("x").append(std::to_string(i)));
    }
    EXPECT_EQ(iterator.getString(field("A.X.T")), "x0");
    for (int i = 1; i <= 100; ++i) {
        ASSERT_TRUE(iterator(block("A.X")));
        EXPECT_EQ(iterator.getString(field("A.X.T")),
                  BAS::String(std::string("x").append(std::to_string(i))));
    }
    EXPECT_FALSE(iterator(block("A.X")));
}

namespace {

// A record as a tree of linked nodes, and for each kind of block what iterators have done to it.
class PlainEdr {
public:
    struct Node {
        std::string text;
        Node const* parent;
        std::map<std::string, std::vector<std::unique_ptr<Node>>> children;
    };
    // By kind, which is a path below "DETAIL."; "" is the root.
    void add(std::string const& kind, std::string const& text) {
        auto* const parent = lastM.at(parentOf(kind));
        auto& children = parent->children[kind];
        children.push_back(std::make_unique<Node>(Node{text, parent, {}}));
        lastM[kind] = children.back().get();
    }
    bool has(std::string const& kind) const { return lastM.contains(kind); }

    void reset(std::string const& kind) {
        for (auto level = kind; !level.empty(); level = parentOf(level)) {
            cursorsM.erase(level);
        }
    }
    bool step(std::string const& kind) {
        std::erase_if(cursorsM,
                      [&](auto const& cursor) { return cursor.first.starts_with(kind + "."); });
        auto const cursor = cursorsM.find(kind);
        auto const* const parent =
            cursor == cursorsM.end() ? current(parentOf(kind)) : parentAt(cursor->second);
        if (parent == nullptr) {
            return false;
        }
        auto const& siblings = childrenOf(*parent, kind);
        auto const after = std::find_if(siblings.begin(), siblings.end(), [&](auto const& node) {
            return cursor != cursorsM.end() && node.get() == cursor->second;
        });
        auto const next = cursor == cursorsM.end() ? siblings.begin() : after + 1;
        cursorsM[kind] = next == siblings.end() ? nullptr : next->get();
        return next != siblings.end();
    }
    std::string atCursor(std::string const& kind) const {
        auto const cursor = cursorsM.find(kind);
        return cursor == cursorsM.end() || cursor->second == nullptr ? "" : cursor->second->text;
    }
    std::string atPositions(std::string const& kind, std::vector<long> const& positions) const {
        auto const* const node = find(kind, positions);
        return node == nullptr ? "" : node->text;
    }

    static std::string parentOf(std::string const& kind) {
        auto const dot = kind.rfind('.');
        return dot == std::string::npos ? "" : kind.substr(0, dot);
    }

private:
    using Nodes = std::vector<std::unique_ptr<Node>>;

    static Nodes const& childrenOf(Node const& node, std::string const& kind) {
        static Nodes const nothing;
        auto const found = node.children.find(kind);
        return found == node.children.end() ? nothing : found->second;
    }
    static Node const* parentAt(Node const* node) {
        return node == nullptr ? nullptr : node->parent;
    }
    Node const* current(std::string const& kind) const {
        if (kind.empty()) {
            return &rootM;
        }
        if (auto const cursor = cursorsM.find(kind); cursor != cursorsM.end()) {
            return cursor->second;
        }
        auto const* const parent = current(parentOf(kind));
        return parent == nullptr || childrenOf(*parent, kind).empty()
                   ? nullptr
                   : childrenOf(*parent, kind).front().get();
    }
    Node const* find(std::string const& kind, std::vector<long> const& positions) const {
        if (kind.empty()) {
            return &rootM;
        }
        auto const* const parent = find(parentOf(kind), positions);
        auto const level = static_cast<std::size_t>(std::count(kind.begin(), kind.end(), '.'));
        auto const position =
            level < positions.size() ? static_cast<unsigned long>(positions[level]) : 0;
        return parent == nullptr || position >= childrenOf(*parent, kind).size()
                   ? nullptr
                   : childrenOf(*parent, kind)[position].get();
    }

    Node rootM{"", nullptr, {}};
    std::map<std::string, Node*> lastM{{"", &rootM}};
    // Null past the last block; nothing before the first.
    std::map<std::string, Node const*> cursorsM;
};

} // namespace

// Whatever is added, stepped and placed, in whichever order.
TEST_F(Edr, ReadsWhatAPlainTreeHas) {
    std::vector<std::string> const kinds = {"A", "A.X", "A.X.Y", "B"};
    std::mt19937 random(7);
    auto const below = [&](std::size_t bound) { return random() % bound; };
    for (int round = 0; round < 300; ++round) {
        PlainEdr plain;
        std::string history;
        fill({});
        EDR::Iterator iterator;
        for (int action = 0; action < 60; ++action) {
            auto const& kind = kinds[below(kinds.size())];
            auto const choice = below(8);
            if (choice == 0 || action == 0) {
                history += " reset " + kind;
                plain.reset(kind);
                ASSERT_TRUE(iterator.setIndex(block(kind)) && iterator.reset(container.get()));
            } else if (choice < 4 && plain.has(PlainEdr::parentOf(kind))) {
                auto const text = kind + std::to_string(action);
                history += " add " + text;
                plain.add(kind, text);
                container->addBlock(block(kind));
                container->setField(field(kind + ".T"), text);
            } else {
                history += " step " + kind;
                ASSERT_EQ(iterator(block(kind)), plain.step(kind)) << history;
            }
            for (auto const& each : kinds) {
                ASSERT_EQ(iterator.getString(field(each + ".T")).str(), plain.atCursor(each))
                    << each << " after" << history;
            }
            auto const position = [&] { return static_cast<long>(below(4)) - 1; };
            std::vector<long> const positions{position(), position()};
            ASSERT_EQ(read(kind + ".T", {positions[0], positions[1]}),
                      plain.atPositions(kind, positions))
                << kind << " after" << history;
            ASSERT_EQ(read(kind + ".T"), plain.atPositions(kind, {}))
                << kind << " after" << history;
        }
    }
}

TEST_F(Edr, IteratorWithoutContainerOrBlockWalksNothing) {
    EDR::Iterator iterator;
    EXPECT_FALSE(iterator.reset(container.get()));
    EXPECT_FALSE(iterator.setIndex(EDR::BlockIndex()));
    EXPECT_FALSE(iterator.setIndex(EDR::Description::root()));
    ASSERT_TRUE(iterator.setIndex(block("A")));
    EXPECT_FALSE(iterator(block("A")));
    EXPECT_EQ(iterator.getString(field("A.T")), "");
    EXPECT_FALSE(iterator.reset(nullptr));
    EXPECT_EQ(iterator.getLong(field("A.T")), 0);
    ASSERT_TRUE(iterator.reset(container.get()));
    EXPECT_FALSE(iterator(EDR::Description::root()));
}

TEST_F(Edr, FactoryResolvesByPathAndCarriesTheAliasIntoMessages) {
    EDR::Factory const factory(description);
    EXPECT_EQ(factory.getIndex("M", "DETAIL.A.T", "ANY", "R"), field("A.T"));
    EXPECT_EQ(factory.getBlockIndex("M", "DETAIL.A.X", "ANY", "R"), block("A.X"));
    BAS::String name;
    factory.getBlockIndexName(block("A.X"), name);
    EXPECT_EQ(name, "DETAIL.A.X");
    struct Case {
        bool isBlock;
        char const* path;
        char const* message;
    };
    for (auto const& c :
         {Case{false, "DETAIL.A", "ERR_EDR_FIELD_NOT_FOUND"},
          Case{false, "T", "ERR_EDR_FIELD_NOT_FOUND"}, Case{false, "", "ERR_EDR_FIELD_NOT_FOUND"},
          Case{true, "DETAIL.A.T", "ERR_EDR_BLOCK_NOT_FOUND"}}) {
        try {
            c.isBlock ? static_cast<void>(factory.getBlockIndex("M", c.path, "ALIAS", "R"))
                      : static_cast<void>(factory.getIndex("M", c.path, "ALIAS", "R"));
            ADD_FAILURE() << c.path;
        } catch (BAS::Status const& status) {
            EXPECT_EQ(status.messageName(), c.message);
            EXPECT_EQ(status.arguments(),
                      (RWTValOrderedVector<BAS::String>{c.path, "ALIAS", "M", "R"}));
        }
    }
    EXPECT_THROW(description.addField(block("A"), "X", EDR::FieldType::text),
                 std::invalid_argument);
}
