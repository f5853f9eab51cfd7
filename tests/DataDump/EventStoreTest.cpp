// Where events lie: the map finds every key.
#include "DataDumpPlugIn.h"

#include <gtest/gtest.h>

#include <iterator>
#include <map>
#include <string>

namespace DataDumpTest {

using FCT::DataDump::EventKey;

// Keys that are crowded into one corner of the table are found whatever is taken out between them.
TEST(EventMap, FindsEveryKeyAfterAnyRenaming) {
    FCT::DataDump::EventMap map;
    std::map<std::string, FCT::DataDump::CapturedEvent*> plain;
    for (int i = 0; i < 300; ++i) {
        auto const name = std::string("c").append(std::to_string(i));
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
        auto const newName = std::string("n").append(std::to_string(step));
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
