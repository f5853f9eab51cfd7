#include "commands/CommandExecution.h"

#include <gtest/gtest.h>

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

} // namespace
