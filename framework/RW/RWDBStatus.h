// The outcome of a database operation: valid, or the text of what went wrong. A value.
#pragma once

#include "RW/RWCString.h"

class RWDBStatus {
public:
    RWDBStatus() = default;
    explicit RWDBStatus(RWCString message) : validM(false), messageM(std::move(message)) {}

    bool isValid() const noexcept { return validM; }
    RWCString const& message() const noexcept { return messageM; }

private:
    bool validM = true;
    RWCString messageM;
};
