// Connection strings of the database module.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace MOD {

// A connection string from the registry, made ready to open. For SQLite that is
//     sqlite3://db=reference.db timeout=5        or        sqlite3://reference.db
// with parameters separated by blanks and values in quotes if they have blanks: a relative path is
// relative to the directory, and the file is opened for reading only. The strings of other
// databases are used unchanged.
struct ConnectionString {
    ConnectionString(std::string const& text, std::filesystem::path const& directory);

    std::string text;
    // The database's file, empty when SQLite is given none; nothing for a server.
    std::optional<std::filesystem::path> file;
};

} // namespace MOD
