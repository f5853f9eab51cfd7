// An SQLite database file that a test fills with SQL of its own.
#pragma once

#include <sqlite3.h>

#include <stdexcept>
#include <string>

namespace support {

// Runs the statements on the database file, which is made when it isn't there. Returns what they
// select: a row a line, with a bar after each value.
inline std::string runSql(std::string const& file, std::string const& statements) {
    auto const takeRow = [](void* rows, int count, char** values, char** /*names*/) {
        for (int i = 0; i < count; ++i) {
            *static_cast<std::string*>(rows) +=
                std::string(values[i] == nullptr ? "NULL" : values[i]) + "|";
        }
        *static_cast<std::string*>(rows) += "\n";
        return 0;
    };
    std::string rows;
    sqlite3* database = nullptr;
    sqlite3_open(file.c_str(), &database);
    // A test's database needn't outlive a power failure.
    sqlite3_exec(database, "PRAGMA synchronous = OFF;", nullptr, nullptr, nullptr);
    char* message = nullptr;
    bool const done =
        sqlite3_exec(database, statements.c_str(), takeRow, &rows, &message) == SQLITE_OK;
    std::string const reason = message == nullptr ? "" : message;
    sqlite3_free(message);
    sqlite3_close(database);
    if (!done) {
        throw std::runtime_error("SQL: " + reason);
    }
    return rows;
}

} // namespace support
