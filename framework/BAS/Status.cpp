#include "BAS/Status.h"

namespace BAS {

Status::Status(String const& messageName, Severity severity, String const& argument)
    : messageNameM(messageName), severityM(severity), argumentsM{argument} {
}

void Status::set(String const& objectName, String const& messageName, Severity severity,
                 String const& argument) {
    *this = Status(messageName, severity, argument);
    objectNameM = objectName;
}

} // namespace BAS
