#include "DAT/LoadSession.h"

#include "DBC/DatabasePlugIn.h"

namespace DAT {

RWDBConnection const& LoadSession::connection(DBC::DatabasePlugIn const& database) {
    if (auto const open = connectionsM.find(&database); open != connectionsM.end()) {
        return open->second;
    }
    auto connection = database.connection();
    connection.beginSnapshot();
    if (!connection.isValid()) {
        throw BAS::Status("ERR_DATABASE", BAS::Status::critical,
                          DBC::DatabasePlugIn::errorMessage(connection.status()));
    }
    return connectionsM.emplace(&database, std::move(connection)).first->second;
}

} // namespace DAT
