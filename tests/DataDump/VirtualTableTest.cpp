// The order of the virtual operations is what a host that was built elsewhere depends on. In the
// Itanium C++ ABI a pointer to a virtual member holds one plus the offset of its slot.
#include "PlugInFixture.h"

#include <cstring>

namespace DataDumpTest {

namespace {

// The slot, counted from 1, of a virtual member in its class's table.
template <class Member>
long slotOf(Member member) {
    struct {
        std::ptrdiff_t function;
        std::ptrdiff_t adjustment;
    } parts{};
    static_assert(sizeof parts == sizeof member);
    std::memcpy(&parts, &member, sizeof parts);
    EXPECT_EQ(parts.function % 2, 1) << "not virtual";
    return static_cast<long>((parts.function - 1) / static_cast<std::ptrdiff_t>(sizeof(void*))) + 1;
}

} // namespace

TEST(VirtualTable, HasTheOperationsInTheirSlots) {
    using FCT::DataDump::PlugIn;
    using UpdateText = void (PlugIn::*)(BAS::String const&);
    using UpdateStatus = void (PlugIn::*)(BAS::Status const&);
    // The two destructors stand in slots 1 and 2; no pointer to them can be had.
    EXPECT_EQ(slotOf(&PlugIn::isUsable), 3);
    EXPECT_EQ(slotOf(&PlugIn::receiveMessage), 4);
    EXPECT_EQ(slotOf(&PlugIn::receiveRequest), 5);
    EXPECT_EQ(slotOf(static_cast<UpdateText>(&PlugIn::update)), 6);
    EXPECT_EQ(slotOf(static_cast<UpdateStatus>(&PlugIn::update)), 7);
    EXPECT_EQ(slotOf(&PlugIn::getInstrumentationProbe), 8);
    EXPECT_EQ(slotOf(&PlugIn::readRegistry), 9);
    EXPECT_EQ(slotOf(&PlugIn::evalEnvironment), 10);
    EXPECT_EQ(slotOf(&PlugIn::setEDRContainerIndices), 11);
    EXPECT_EQ(slotOf(&PlugIn::registryUpdate), 12);
    EXPECT_EQ(slotOf(&PlugIn::updateBoolFlag), 13);
    EXPECT_EQ(slotOf(&PlugIn::setBoolFlag), 14);
    EXPECT_EQ(slotOf(&PlugIn::init), 15);
    EXPECT_EQ(slotOf(&PlugIn::finalInit), 16);
    EXPECT_EQ(slotOf(&PlugIn::shutdown), 17);
    EXPECT_EQ(slotOf(&PlugIn::startup), 18);
    EXPECT_EQ(slotOf(&PlugIn::install), 19);
    EXPECT_EQ(slotOf(&PlugIn::uninstall), 20);
    EXPECT_EQ(slotOf(&PlugIn::processEdrContainer), 21);
    EXPECT_EQ(slotOf(&PlugIn::isActive), 22);
    EXPECT_EQ(slotOf(&PlugIn::loadDependencies), 23);

    using PLG::LifecycleInterface;
    EXPECT_EQ(slotOf(&LifecycleInterface::install), 3);
    EXPECT_EQ(slotOf(&LifecycleInterface::uninstall), 4);
    EXPECT_EQ(slotOf(&LifecycleInterface::startup), 5);
    EXPECT_EQ(slotOf(&LifecycleInterface::shutdown), 6);
}

// Both views of a plug-in reach the same operations, destruction included.
TEST(VirtualTable, SecondInterfaceForwardsToThePlugIn) {
    struct Recorder : PLG::StdPlugIn {
        explicit Recorder(std::string& log) : StdPlugIn("recorder", "1"), logM(log) {}
        ~Recorder() override { logM += "~"; }
        bool install() override { return note("i"); }
        bool uninstall() override { return note("u"); }
        bool startup() override { return note("s"); }
        bool shutdown() override { return note("d"); }
        bool note(char const* what) {
            logM += what;
            return true;
        }
        std::string& logM;
    };
    std::string log;
    PLG::LifecycleInterface* const second = new Recorder(log);
    EXPECT_NE(static_cast<void*>(second), dynamic_cast<void*>(second));
    EXPECT_TRUE(second->install() && second->startup() && second->shutdown() &&
                second->uninstall());
    delete second;
    EXPECT_EQ(log, "isdu~");
    EXPECT_EQ(BAS::RegisteredObject::find("recorder"), nullptr);
}

} // namespace DataDumpTest
