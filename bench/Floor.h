// The floor against which every way to keep events is measured: the host reads and the number
// conversions that each of them makes, and nothing kept.
#pragma once

#include "CaptureRun.h"
#include "EventReading.h"

namespace bench {

class NothingKeeper {
public:
    explicit NothingKeeper(std::size_t /*capacity*/) {}
    void event(EventHead const& head) { use(head); }
    void owner(OwnerBlock const& block, bool /*sponsors*/) { use(block); }
    void item(unsigned long id, BAS::String const& model) {
        use(id);
        use(model);
    }
    void packet(ChargePacket const& packet) { use(packet); }

private:
    // Makes the compiler believe that somebody looks at the value.
    template <class Value>
    static void use(Value const& value) {
        asm volatile("" : : "r"(&value) : "memory");
    }
};

inline std::unique_ptr<PLG::FunctionPlugIn> makeFloor(Host& /*host*/, std::size_t capacity) {
    return std::make_unique<EventReading<NothingKeeper>>(DataDumpTest::plugInName, capacity);
}

} // namespace bench
