// An open database connection, shared by the objects that were made from it and closed with the
// last of them. It never throws: one that could not be opened is not valid and says why in its
// status. One connection is used by one thread at a time.
#pragma once

#include "RW/RWDBStatus.h"

#include <memory>

namespace soci {
class session;
}

class RWDBDatabase;

class RWDBConnection {
public:
    // The connection string names the kind of database and its parameters, such as
    // "sqlite3://db=reference.db" or "postgresql://dbname=reference host=/run/postgresql". Secrets
    // in it stay out of the status.
    explicit RWDBConnection(RWCString const& connectionString);

    bool isValid() const noexcept { return statusM.isValid(); }
    RWDBStatus const& status() const noexcept { return statusM; }
    // The connection string without its secrets.
    RWCString const& shownText() const noexcept { return shownTextM; }

    RWDBDatabase database() const;

    // Has all that is read from now on come from one state of the database, whatever others write
    // meanwhile. Holds until the connection is closed; once for a connection.
    void beginSnapshot();

private:
    friend class RWDBReader;

    RWCString shownTextM;
    RWDBStatus statusM;
    std::shared_ptr<soci::session> sessionM;
};
