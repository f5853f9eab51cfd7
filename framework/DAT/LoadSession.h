// What data modules load from together: one connection to each database, on which all of them read
// one state of it. Used by one thread; the connections close with the object.
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
    // Whoever loads gives up with an exception soon after a stop is requested.
    explicit LoadSession(std::stop_token stop = {}) : stopM(std::move(stop)) {}
    LoadSession(LoadSession const&) = delete;
    LoadSession& operator=(LoadSession const&) = delete;

    // The connection to that database. The state that is read is that of the first reading on it.
    // Throws a BAS::Status "ERR_DATABASE" when there is no connection to be had.
    RWDBConnection const& connection(DBC::DatabasePlugIn const& database);

    std::stop_token const& stop() const noexcept { return stopM; }

private:
    std::stop_token stopM;
    std::map<DBC::DatabasePlugIn const*, RWDBConnection> connectionsM;
};

} // namespace DAT
