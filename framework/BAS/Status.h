// What an object of the framework reports: which object, which message, how severe, and the
// message's arguments. The text of a message is in the host's message catalogue. A status is a
// value; some operations throw one.
#pragma once

#include "BAS/String.h"
#include "RW/RWTValOrderedVector.h"

namespace BAS {

class Status {
public:
    enum Severity { debug = 0, info = 1, notice = 2, warning = 3, error = 4, critical = 5 };

    // No message: nothing was reported.
    Status() = default;
    Status(String const& messageName, Severity severity, String const& argument);

    // Replaces everything; the argument becomes the only one.
    void set(String const& objectName, String const& messageName, Severity severity,
             String const& argument);
    void setObjectName(String const& objectName) { objectNameM = objectName; }

    String const& objectName() const noexcept { return objectNameM; }
    String const& messageName() const noexcept { return messageNameM; }
    Severity severity() const noexcept { return severityM; }
    RWTValOrderedVector<String>& arguments() noexcept { return argumentsM; }
    RWTValOrderedVector<String> const& arguments() const noexcept { return argumentsM; }

private:
    String objectNameM;
    String messageNameM;
    Severity severityM = info;
    RWTValOrderedVector<String> argumentsM;
};

} // namespace BAS
