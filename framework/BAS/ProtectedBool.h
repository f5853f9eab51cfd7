// A flag that threads share.
#pragma once

#include <atomic>

namespace BAS {

class ProtectedBool {
public:
    bool value() const noexcept { return valueM.load(); }
    void set(bool value) noexcept { valueM.store(value); }

private:
    std::atomic<bool> valueM{false};
};

} // namespace BAS
