// A database connection module as its clients see it.
#pragma once

#include "BAS/RegisteredObject.h"
#include "RW/RWDBConnection.h"

namespace DBC {

class DatabasePlugIn : public BAS::RegisteredObject {
public:
    using RegisteredObject::RegisteredObject;
    ~DatabasePlugIn() override;

    // A new connection for the caller, open until it and all objects made from it are destroyed;
    // not valid when the database can't be reached. Any thread.
    virtual RWDBConnection connection() const = 0;

    // The text of a database error, on one line.
    static BAS::String errorMessage(RWDBStatus const& status);
};

} // namespace DBC
