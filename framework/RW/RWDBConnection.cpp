#include "RW/RWDBConnection.h"

#include "RW/RWDBDatabase.h"

#include <soci/soci.h>

#include <regex>

namespace {

// A value may stand in quotes, with escaped quotes inside.
std::string withoutSecrets(std::string const& text) {
    static std::regex const secret(R"((password|pass)\s*=\s*('(\\.|[^'\\])*'|"[^"]*"|\S*))",
                                   std::regex::icase);
    return std::regex_replace(text, secret, "$1=***");
}

} // namespace

RWDBConnection::RWDBConnection(RWCString const& connectionString) {
    try {
        sessionM = std::make_shared<soci::session>(connectionString.str());
    } catch (std::exception const& error) {
        statusM = RWDBStatus("cannot open the database '" + withoutSecrets(connectionString.str()) +
                             "': " + withoutSecrets(error.what()));
    }
}

RWDBDatabase RWDBConnection::database() const {
    return RWDBDatabase(*this);
}
