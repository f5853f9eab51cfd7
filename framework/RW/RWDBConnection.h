// An open database connection, shared by the objects that were made from it and closed with the
// last of them. It never throws: one that could not be opened is not valid and has the reason in
// its status. One connection is used by one thread at a time.
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

    // All later reads on the connection see one state of the database, whatever others write.
    // Once for a connection.
    void beginSnapshot();

private:
    friend class RWDBReader;

    RWCString shownTextM;
    RWDBStatus statusM;
    std::shared_ptr<soci::session> sessionM;
};
