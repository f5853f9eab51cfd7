// The event queue and the event map: order, eviction and who owns what.
#include "PlugInFixture.h"

#include <iterator>
#include <list>
#include <map>

namespace DataDumpTest {

using FCT::DataDump::EventKey;
using testing::ElementsAre;

struct SequenceCase {
    char const* title;
    char const* capacity;
    std::vector<char const*> customers;
    std::vector<std::string> queue;
};

class Sequence : public PlugInFixture, public testing::WithParamInterface<SequenceCase> {};

TEST_P(Sequence, LeavesTheMostRecentKeysInTheQueueAndTheirRecordsInTheMap) {
    keys["NumberOfEvents"] = GetParam().capacity;
    start();
    for (auto const* customer : GetParam().customers) {
        processCustomer(customer);
    }
    EXPECT_EQ(queued(), GetParam().queue);
    std::size_t records = 0;
    for (auto const& customer : GetParam().queue) {
        if (customer != "(empty)") {
            auto const* const record = recordOf(customer.c_str());
            ASSERT_NE(record, nullptr) << customer;
            EXPECT_EQ(record->identifier, customer);
            ++records;
        }
    }
    EXPECT_EQ(plugIn->eventMap.entries(), records);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, Sequence,
    testing::Values(
        SequenceCase{"BelowCapacity", "3", {"K1", "K2"}, {"K2", "K1"}},
        SequenceCase{"RepeatAtTheFront", "3", {"K1", "K1"}, {"K1"}},
        SequenceCase{"OldestIsEvicted", "3", {"K1", "K2", "K3", "K4"}, {"K4", "K3", "K2"}},
        SequenceCase{
            "RepeatMovesToTheFront", "3", {"K1", "K2", "K3", "K1", "K4"}, {"K4", "K1", "K3"}},
        SequenceCase{"EvictedKeyComesBack", "2", {"K1", "K2", "K3", "K1"}, {"K1", "K3"}},
        SequenceCase{"CapacityOne", "1", {"K1", "K1", "K2", "K1"}, {"K1"}},
        SequenceCase{"CapacityNothing", "0", {"K1", "K2", "K1"}, {"(empty)"}},
        SequenceCase{"EmptyCustomer", "2", {"", "K1", ""}, {"", "K1"}}),
    [](auto const& tested) { return tested.param.title; });

TEST_F(PlugInFixture, EvictionReusesTheKeyObjectAndStartsANewRecord) {
    keys["NumberOfEvents"] = "2";
    start();
    process({{"INTERN_SERVICE_CODE", "TEL"}, {"A_NUMBER", "K1"}, {"EVENT_TYPE", "/event/one"}});
    auto const* const first = plugIn->eventMap.find(EventKey("K1", "TEL"));
    processCustomer("K2");
    processCustomer("K3");
    EXPECT_THAT(queued(), ElementsAre("K3", "K2"));
    EXPECT_EQ(plugIn->eventMap.find(EventKey("K3", "TEL")), first);
    EXPECT_EQ(static_cast<EventKey const&>(*first), EventKey("K3", "TEL"));
    EXPECT_EQ(recordOf("K1"), nullptr);
    EXPECT_EQ(recordOf("K3")->eventType, "");
}

TEST_F(PlugInFixture, KeysDifferByCustomerAndByService) {
    start();
    processCustomer("K1");
    process({{"INTERN_SERVICE_CODE", "SMS"}, {"B_NUMBER", "K1"}});
    processCustomer("K");
    EXPECT_EQ(plugIn->eventMap.entries(), 3U);
    EXPECT_NE(recordOf("K1", "TEL"), recordOf("K1", "SMS"));
}

TEST_F(PlugInFixture, EvictedEmptyEntryGivesWayToAnEmptyEntry) {
    keys["NumberOfEvents"] = "2";
    start();
    plugIn->eventQueue.pushFront(nullptr);
    processCustomer("K1");
    EXPECT_THAT(queued(), ElementsAre("K1", "(empty)"));
    processCustomer("K2");
    EXPECT_THAT(queued(), ElementsAre("(empty)", "K1"));
    EXPECT_EQ(recordOf("K2"), nullptr);
    processCustomer("K2");
    EXPECT_THAT(queued(), ElementsAre("K2", "(empty)"));
    processCustomer("K2");
    EXPECT_THAT(queued(), ElementsAre("K2", "(empty)"));
}

// Against a list that is searched from its front, over a long run of EDRs: few keys and many, so
// that keys come back after they were evicted.
TEST_F(PlugInFixture, QueueBehavesLikeAListSearchedFromItsFront) {
    std::size_t const capacity = 50;
    keys["NumberOfEvents"] = std::to_string(capacity);
    start();
    std::list<std::string> plain;
    unsigned random = 1;
    for (int step = 0; step < 1500; ++step) {
        random = random * 1103515245 + 12345;
        auto const customer = std::to_string(random / 65536 % (step % 7 == 0 ? 500 : 60));
        processCustomer(customer.c_str());
        plain.remove(customer);
        plain.push_front(customer);
        if (plain.size() > capacity) {
            plain.pop_back();
        }
        ASSERT_EQ(queued(), std::vector<std::string>(plain.begin(), plain.end()));
        ASSERT_EQ(recordOf(customer.c_str())->identifier, customer);
        ASSERT_EQ(plugIn->eventMap.entries(), plain.size());
    }
}

TEST(RefillList, KeepsItsStorageUnlessItIsUnusuallyLong) {
    FCT::DataDump::RefillList<FCT::DataDump::OwnDiscountInfo> list;
    for (auto const& [length, kept] : {std::pair(32, "kept"), std::pair(33, "")}) {
        for (int i = 0; i < length; ++i) {
            list.append().name = "kept";
        }
        list.clear();
        EXPECT_EQ(list.entries(), 0U);
        EXPECT_EQ(list.append().name, kept);
        list.clear();
    }
}

// Keys that are crowded into one corner of the table are found whatever is taken out between them.
TEST(EventMap, FindsEveryKeyAfterAnyRenaming) {
    FCT::DataDump::EventMap map;
    std::map<std::string, FCT::DataDump::CapturedEvent*> plain;
    for (int i = 0; i < 300; ++i) {
        auto const name = "c" + std::to_string(i);
        plain[name] = &map.add(EventKey(name, ""));
    }
    unsigned random = 1;
    for (int step = 0; step < 3000; ++step) {
        random = random * 1103515245 + 12345;
        auto const from = std::next(plain.begin(), random / 65536 % 300);
        auto* const event = from->second;
        ASSERT_EQ(map.find(EventKey(from->first, "")), event);
        auto const oldName = from->first;
        plain.erase(from);
        auto const newName = "n" + std::to_string(step);
        map.rename(*event, EventKey(newName, ""));
        plain[newName] = event;
        ASSERT_EQ(map.find(EventKey(oldName, "")), nullptr);
    }
    for (auto const& [name, event] : plain) {
        ASSERT_EQ(map.find(EventKey(name, "")), event);
    }
    map.clear();
    EXPECT_EQ(map.find(EventKey(plain.begin()->first, "")), nullptr);
    EXPECT_EQ(map.entries(), 0U);
}

} // namespace DataDumpTest
