// Wakes a waiting thread, repeatedly: rung by any thread, and waited for together with files and
// directories. An event that happens only once is a Notification.
#pragma once

#include "base/FileDescriptor.h"

namespace host {

class Bell {
public:
    // Throws a BAS::Status when no descriptor is left.
    Bell();
    Bell(Bell const&) = delete;
    Bell& operator=(Bell const&) = delete;

    void ring() noexcept;
    // Whether it was rung since the last call. One thread.
    bool take() noexcept;
    // Readable once it is rung, until take.
    int descriptor() const noexcept { return descriptorM.number(); }

private:
    FileDescriptor descriptorM;
};

} // namespace host
