// The connections from which data modules load together: one for each database, on which all of
// them read the same state. Used by one thread; the connections close with the object.
#pragma once

#include "RW/RWDBConnection.h"

#include <map>
#include <stop_token>

namespace DBC {
class DatabasePlugIn;
}

namespace DAT {

class LoadSession {
public:
    // Loading ends with an exception soon after a stop is requested.
    explicit LoadSession(std::stop_token stop = {}) : stopM(std::move(stop)) {}
    LoadSession(LoadSession const&) = delete;
    LoadSession& operator=(LoadSession const&) = delete;

    // The connection to that database, with its state at the first read. Throws a BAS::Status
    // "ERR_DATABASE" when it can't be reached.
    RWDBConnection const& connection(DBC::DatabasePlugIn const& database);

    std::stop_token const& stop() const noexcept { return stopM; }

private:
    std::stop_token stopM;
    std::map<DBC::DatabasePlugIn const*, RWDBConnection> connectionsM;
};

} // namespace DAT
