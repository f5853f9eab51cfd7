#include "base/LogFile.h"
#include "base/MessageCatalogue.h"
#include "support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

BAS::Status status(char const* object, char const* name,
                   std::vector<std::string> const& arguments) {
    BAS::Status made;
    made.set(object, name, BAS::Status::critical, "");
    made.arguments().clear();
    for (auto const& argument : arguments) {
        made.arguments().append(argument);
    }
    return made;
}

TEST(MessageCatalogue, PutsArgumentsIntoTheText) {
    struct {
        BAS::Status status;
        char const* text;
    } const cases[] = {
        {status("", "ERR_REG_ENTRY_NOT_FOUND", {"AccountDataModule"}),
         "The mandatory registry key 'AccountDataModule' is missing."},
        {status("", "ERR_ROW_REJECTED", {"T", "K", "100%1 wrong"}),
         "The row K of table T is rejected: 100%1 wrong"},
        {status("", "ERR_REG_VALUE_INVALID", {"x"}), "The registry value 'x' is invalid: "},
        {status("", "ERR_DATABASE", {"locked", "more"}), "Database error: locked 'more'"},
        {status("", "ERR_OF_A_MODULE", {"a", "b"}), "ERR_OF_A_MODULE 'a' 'b'"},
    };
    for (auto const& each : cases) {
        EXPECT_EQ(host::messageText(each.status), each.text);
    }
}

TEST(LogRecord, IsOneLineWithTimeLevelPipelineAndObject) {
    auto const time = std::chrono::sys_days(std::chrono::year(2026) / 3 / 9) +
                      std::chrono::hours(7) + std::chrono::milliseconds(45);
    struct {
        BAS::Status status;
        char const* record;
    } const cases[] = {
        {status("host.Pipelines.P.Functions.F.Module", "ERR_DATABASE", {"x"}),
         "critical P host.Pipelines.P.Functions.F.Module ERR_DATABASE Database error: x\n"},
        {status("host.DataPool.Pipelines.Module", "ERR_DATABASE", {"x"}),
         "critical - host.DataPool.Pipelines.Module ERR_DATABASE Database error: x\n"},
        {status("", "ERR_DATABASE", {"a\nb\r\t\x1b[31m\\ \x7f \xc2\x9b \xc3\xa4"}),
         "critical - - ERR_DATABASE Database error: "
         "a\\nb\\r\\t\\x1b[31m\\\\ \\x7f \\u009b \xc3\xa4\n"},
        {status("", "ERR_DATABASE", {"\xc3"}), "critical - - ERR_DATABASE Database error: \\xc3\n"},
    };
    for (auto const& each : cases) {
        EXPECT_EQ(host::logRecord(each.status, time),
                  std::string("2026-03-09T07:00:00.045Z ") + each.record);
    }
    auto odd = status("", "ERR_DATABASE", {"x"});
    odd.set("", "ERR_DATABASE", static_cast<BAS::Status::Severity>(7), "x");
    EXPECT_NE(host::logRecord(odd, time).find(" level-7 "), std::string::npos);
}

TEST(LogFile, TakesWholeRecordsFromManyThreadsAndKeepsOldOnes) {
    support::TemporaryDirectory const directory;
    directory.write("x.log", "an older record\n");
    {
        host::LogFile one(directory.path() / "x.log", BAS::Status::debug);
        host::LogFile other(directory.path() / "x.log", BAS::Status::debug);
        std::vector<std::jthread> threads;
        for (auto* const log : {&one, &one, &other}) {
            threads.emplace_back([log] {
                for (int i = 0; i < 500; ++i) {
                    log->write(status("o", "ERR_DATABASE", {std::string(300, 'x')}));
                }
            });
        }
    }
    std::istringstream text(directory.read("x.log"));
    std::string line;
    std::getline(text, line);
    EXPECT_EQ(line, "an older record");
    int records = 0;
    while (std::getline(text, line)) {
        ++records;
        EXPECT_EQ(line.substr(24),
                  " critical - o ERR_DATABASE Database error: " + std::string(300, 'x'));
    }
    EXPECT_EQ(records, 1500);
}

} // namespace
