#include "commands/CommandExecution.h"

#include "HostProcess.h"
#include "support/LogRecorder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

namespace {

std::string parsed(std::string_view text) {
    try {
        auto const command = host::parseCommand(text);
        auto rendered = command.update.name().str();
        for (auto const& key : command.update.children()) {
            rendered += "|" + key->name().str() + "->" + key->value().str();
        }
        return rendered;
    } catch (std::invalid_argument const& error) {
        return std::string("error: ") + error.what();
    }
}

TEST(Command, IsReadFromText) {
    struct {
        char const* text;
        char const* expected;
    } const cases[] = {
        {"host.A.Module DumpEvents=/tmp/x", "host.A.Module|DumpEvents->/tmp/x"},
        {"  o   A  B=  \tC=x=y ", "o|A->|B->|C->x=y"},
        {"o K=\"a b\" L='c \"d' M=\"\"", "o|K->a b|L->c \"d|M->"},
        {"", "error: expected OBJECT KEY[=VALUE]..."},
        {"host.A.Module", "error: expected OBJECT KEY[=VALUE]..."},
        {"o =x", "error: '=x' has no key, expected KEY[=VALUE]"},
        {"o A=1 A", "error: the key 'A' is given twice"},
        {"o A=\"b c", "error: the quote \" isn't closed"},
    };
    for (auto const& each : cases) {
        EXPECT_EQ(parsed(each.text), each.expected) << each.text;
    }
}

TEST(CommandTimer, LogsOnceThatACommandTakesLong) {
    support::LogRecorder log;
    host::Notification const stop;
    auto const isLogged = [&] {
        auto const& entries = log.entries();
        return std::any_of(entries.begin(), entries.end(), [](auto const& entry) {
            return entry.starts_with("ERR_COMMAND_LONG(3) [Write=x] [0.02] @one");
        });
    };
    {
        host::CommandTimer timer(log, stop, std::chrono::seconds(5), std::chrono::milliseconds(20));
        auto const turn = timer.begin("one", "Write=x");
        ASSERT_TRUE(eventually(isLogged));
        auto const next = timer.begin("two", "Count"); // wakes the timer up
        ASSERT_TRUE(eventually([&] { return log.entries().size() >= 4; }));
    }
    EXPECT_EQ(log.entries().size(), 4U); // of each, that it began and that it is long
}

} // namespace
