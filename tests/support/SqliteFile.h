// An SQLite database file that a test fills with SQL of its own.
#pragma once

#include <sqlite3.h>

#include <stdexcept>
#include <string>

namespace support {

// Runs the statements on the database file, which is made when it isn't there.
inline void runSql(std::string const& file, std::string const& statements) {
    sqlite3* database = nullptr;
    sqlite3_open(file.c_str(), &database);
    char* message = nullptr;
    bool const done =
        sqlite3_exec(database, statements.c_str(), nullptr, nullptr, &message) == SQLITE_OK;
    std::string const reason = message == nullptr ? "" : message;
    sqlite3_free(message);
    sqlite3_close(database);
    if (!done) {
        throw std::runtime_error("SQL: " + reason);
    }
}

} // namespace support
