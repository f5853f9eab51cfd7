// An event that happens once, such as a request to stop: set by any thread or by a signal handler,
// and waited for together with files and directories.
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

    // May be called from a signal handler.
    void set() noexcept;
    bool isSet() const noexcept { return isSetM; }
    // Readable once it is set, for poll.
    int descriptor() const noexcept { return descriptorM.number(); }

private:
    FileDescriptor descriptorM;
    std::atomic<bool> isSetM{false};
    static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler sets it");
};

} // namespace host
