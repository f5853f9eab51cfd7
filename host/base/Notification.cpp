#include "base/Notification.h"

#include "base/Failures.h"

#include <sys/eventfd.h>

namespace host {

Notification::Notification() : descriptorM(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!descriptorM.isOpen()) {
        throw systemStatus("eventfd", errno);
    }
}

void Notification::set() noexcept {
    isSetM = true;
    static_cast<void>(::eventfd_write(descriptorM.number(), 1));
}

} // namespace host
