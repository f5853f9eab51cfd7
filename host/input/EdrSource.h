// Where the EDRs of a pipeline come from: fills portions with what comes next in the input. One
// thread reads; a source has threads of its own where it needs any.
#pragma once

#include "input/InputPortion.h"

namespace host {

class EdrSource {
public:
    virtual ~EdrSource() = default;
    EdrSource(EdrSource const&) = delete;
    EdrSource& operator=(EdrSource const&) = delete;

    // Makes the portion the next one of the input, and waits until there is something. A portion
    // ends at the latest where reading on would mean to wait. What fails is left in the portion,
    // after what was read before.
    virtual void read(InputPortion& portion) noexcept = 0;

    // Ends the waiting for good: what read was about to return is dropped by the caller. Any
    // thread.
    virtual void abandon() noexcept = 0;

protected:
    EdrSource() = default;
};

} // namespace host
