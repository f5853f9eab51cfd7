// The event queue and the event map: order, eviction and who owns what.
#include "PlugInFixture.h"

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
    auto const* const first = *plugIn->eventQueue.begin();
    processCustomer("K2");
    processCustomer("K3");
    EXPECT_EQ(*plugIn->eventQueue.begin(), first);
    EXPECT_EQ(*first, EventKey("K3", "TEL"));
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

// Against a list that is searched from its front, over a long run of changes.
TEST(EventQueue, BehavesLikeAListSearchedFromItsFront) {
    std::vector<EventKey> keys;
    for (int i = 0; i < 40; ++i) {
        keys.emplace_back("c" + std::to_string(i / 4), "s" + std::to_string(i % 4));
    }
    FCT::DataDump::EventQueue queue;
    std::list<EventKey const*> plain;
    unsigned random = 1;
    for (int step = 0; step < 5000; ++step) {
        random = random * 1103515245 + 12345;
        auto const& key = keys[random / 65536 % keys.size()];
        auto const found = queue.find(key);
        auto const plainFound = std::find_if(plain.begin(), plain.end(), [&](auto const* entry) {
            return entry != nullptr && *entry == key;
        });
        ASSERT_EQ(found == queue.end(), plainFound == plain.end());
        if (found == queue.end()) {
            queue.pushFront(&key);
            plain.push_front(&key);
        } else if (step % 3 == 0) {
            queue.moveToFront(found);
            plain.splice(plain.begin(), plain, plainFound);
        } else {
            ASSERT_EQ(queue.remove(found), &key);
            plain.erase(plainFound);
        }
        if (step % 50 == 0) {
            queue.pushFront(nullptr);
            plain.push_front(nullptr);
        }
        ASSERT_EQ(queue.entries(), plain.size());
        ASSERT_TRUE(std::equal(queue.begin(), queue.end(), plain.begin(), plain.end()));
        ASSERT_EQ(*queue.back(), plain.back());
        if (step % 1000 == 999) {
            queue.clear();
            plain.clear();
        }
    }
}

} // namespace DataDumpTest
