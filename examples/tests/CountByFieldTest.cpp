#include "CountByField.h"

#include "BAS/ProtectedBool.h"
#include "EDR/Container.h"
#include "ExampleHost.h"

#include <gtest/gtest.h>

#include <sstream>

namespace Example {

namespace {

std::string textOf(std::filesystem::path const& file) {
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
}

TEST(CountByField, CountsDetailsAndWritesThemOnCommand) {
    ExampleHost host;
    host.setFunctionKey("Field", "DETAIL.SERVICE");
    CountByField plugIn(ExampleHost::function);
    ASSERT_TRUE(plugIn.isUsable());

    RWTPtrOrderedVector<EDR::Container> batch;
    EDR::Container edr(host.description);
    batch.append(&edr);
    for (auto const* const service : {"TEL", "SMS", "TEL"}) {
        edr.clear(EDR::detailRecord);
        edr.setField(host.serviceField, service);
        plugIn.processEdrContainer(batch);
    }
    edr.clear(EDR::trailerRecord);
    plugIn.processEdrContainer(batch);

    auto const report = host.directory / "counts.txt";
    BAS::RegistryEntry update(ExampleHost::function);
    update.add("Report", report.string());
    BAS::ProtectedBool workDone;
    EXPECT_TRUE(plugIn.registryUpdate(&update, workDone));
    EXPECT_TRUE(workDone.value());
    EXPECT_EQ(textOf(report), "SMS 1\nTEL 2\n");
}

TEST(CountByField, IsInvalidWithoutItsField) {
    struct {
        char const* field;
        char const* message;
    } const cases[] = {{"", "ERR_REG_ENTRY_NOT_FOUND"},
                       {"DETAIL.NO_SUCH_FIELD", "ERR_EDR_FIELD_NOT_FOUND"}};
    for (auto const& each : cases) {
        ExampleHost host;
        host.setFunctionKey("Field", each.field);
        CountByField plugIn(ExampleHost::function);
        EXPECT_FALSE(plugIn.isUsable());
        EXPECT_EQ(plugIn.status().messageName().str(), each.message);
    }
}

} // namespace

} // namespace Example
