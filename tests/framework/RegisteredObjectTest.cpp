// Registered objects: names, the registry, statuses and their ways to the logs.
#include "PBC/ModuleReference.h"
#include "PLG/FunctionPlugIn.h"
#include "support/RegistryFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;

class Object : public BAS::RegisteredObject {
public:
    using RegisteredObject::isValidM;
    using RegisteredObject::RegisteredObject;
    using RegisteredObject::setStatus;
};

class Function : public PLG::FunctionPlugIn {
public:
    explicit Function(BAS::String const& name) : FunctionPlugIn(name, "1") {}
    bool processEdrContainer(RWTPtrOrderedVector<EDR::Container>&) override { return true; }
    using FunctionPlugIn::edrFactoryM;
};

} // namespace

TEST(RegisteredObject, NameIsTakenOnceAndFreedWithItsObject) {
    {
        Object first("a.b");
        Object second("a.b");
        EXPECT_EQ(BAS::RegisteredObject::find("a.b"), &first);
        EXPECT_TRUE(first.isUsable());
        EXPECT_FALSE(second.isUsable());
        first.isValidM = false;
        EXPECT_FALSE(first.isUsable());
    }
    EXPECT_EQ(BAS::RegisteredObject::find("a.b"), nullptr);
}

TEST(RegisteredObject, SubtreeIsTheOneOfItsFullName) {
    support::RegistryFixture registry;
    registry.add("Pool.Data.Module.Key", "value");
    Object const object("host.Pool.Data.Module");
    ASSERT_NE(object.registry(), nullptr);
    EXPECT_EQ(object.registry()->find("Key")->value(), "value");
    EXPECT_EQ(object.registry()->find("key"), nullptr);
    for (auto const* name : {"host.Pool.Data", "host", "host.Pool.Data.Module.Key"}) {
        EXPECT_NE(Object(name).registry(), nullptr) << name;
    }
    for (auto const* name : {"host.Pool.Other.Module", "other.Pool.Data.Module", "", "Pool.Data"}) {
        EXPECT_EQ(Object(name).registry(), nullptr) << name;
    }
    EXPECT_EQ(BAS::RegisteredObject::rootNameCM, "host");
}

TEST(RegisteredObject, PartsOfItsName) {
    struct Case {
        char const* name;
        char const* directory;
        char const* pipeline;
        char const* moduleReference;
    };
    for (auto const& c : {Case{"host.Pipelines.Main.Functions.F.Module",
                               "host.Pipelines.Main.Functions.F", "host.Pipelines.Main", "F"},
                          Case{"Pipelines.Main", "Pipelines", "Pipelines.Main", "Pipelines"},
                          Case{"host.Pipelines", "host", "", "host"},
                          Case{"host.Pipelines2.Main.F", "host.Pipelines2.Main", "", "Main"},
                          Case{"plain", "", "", ""}}) {
        Object const object(c.name);
        auto const directory = BAS::RegisteredObject::dirName(c.name);
        EXPECT_EQ(directory, c.directory);
        EXPECT_EQ(PBC::ModuleReference(directory), c.moduleReference);
        EXPECT_EQ(object.superName("Pipelines"), c.pipeline);
    }
}

TEST(RegisteredObject, StatusIsKeptAndLoggedUnderItsName) {
    support::RegistryFixture registry;
    Object object("host.X");
    EXPECT_TRUE(object.status().messageName().isNull());
    object.setStatus("ERR_A", BAS::Status::error, "one", false);
    EXPECT_EQ(object.status().messageName(), "ERR_A");
    EXPECT_EQ(object.status().objectName(), "host.X");
    BAS::Status foreign("ERR_B", BAS::Status::critical, "two");
    foreign.arguments().append("three");
    object.setStatus(foreign, true);
    foreign.setObjectName("host.Y");
    object.setStatus(foreign, true);
    EXPECT_THAT(registry.log.entries(),
                ElementsAre("ERR_B(5) [two] [three] @host.X", "ERR_B(5) [two] [three] @host.Y"));
}

TEST(FunctionPlugIn, ReachesThePipelineOfItsName) {
    support::RegistryFixture registry;
    EDR::Description const description;
    EDR::Factory const factory(description);
    PLG::Pipeline const pipeline("host.Pipelines.Main", factory, registry.pipelineLog);
    Function const inside("host.Pipelines.Main.Functions.F.Module");
    EXPECT_EQ(inside.edrFactoryM, &factory);
    inside.writeToPipelineLog(BAS::Status("ERR_A", BAS::Status::error, "one"));
    EXPECT_THAT(registry.pipelineLog.entries(), ElementsAre("ERR_A(4) [one] @"));

    Function outside("host.Pipelines.Other.Functions.F.Module");
    EXPECT_FALSE(outside.isUsable());
    outside.writeToPipelineLog(BAS::Status("ERR_A", BAS::Status::error, "lost"));
    EXPECT_EQ(registry.pipelineLog.entries().size(), 1U);
    EXPECT_THAT(registry.log.entries(),
                ElementsAre("ERR_PIPELINE_NOT_FOUND(5) [host.Pipelines.Other.Functions.F.Module] "
                            "@host.Pipelines.Other.Functions.F.Module"));
}
