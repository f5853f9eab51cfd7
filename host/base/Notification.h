// An event that happens once, such as a request to stop: set by any thread, and waited for together
// with files and directories.
#pragma once

#include "base/FileDescriptor.h"

#include <atomic>

namespace host {

class Notification {
public:
    // Throws a BAS::Status when no descriptor is left.
    Notification();
    Notification(Notification const&) = delete;
    Notification& operator=(Notification const&) = delete;

    void set() noexcept;
    bool isSet() const noexcept { return isSetM; }
    // Readable once it is set, for poll.
    int descriptor() const noexcept { return descriptorM.number(); }

private:
    FileDescriptor descriptorM;
    std::atomic<bool> isSetM{false};
};

} // namespace host
