#include "base/Bell.h"

#include "base/Failures.h"

#include <sys/eventfd.h>

namespace host {

Bell::Bell() : descriptorM(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!descriptorM.isOpen()) {
        throw systemStatus("eventfd", errno);
    }
}

void Bell::ring() noexcept {
    static_cast<void>(::eventfd_write(descriptorM.number(), 1));
}

bool Bell::take() noexcept {
    eventfd_t count = 0;
    return ::eventfd_read(descriptorM.number(), &count) == 0;
}

} // namespace host
