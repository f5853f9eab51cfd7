// Connection strings of the database module.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace MOD {

// A connection string as an operator writes it, made ready to open. For SQLite that is
//     sqlite3://db=reference.db timeout=5        or        sqlite3://reference.db
// with parameters separated by blanks and values in quotes where they hold blanks: a relative path
// is relative to the directory, and the file is opened for reading only. Every other kind of
// database takes its string as it stands.
struct ConnectionString {
    ConnectionString(std::string const& text, std::filesystem::path const& directory);

    std::string text;
    // The database's own file, empty when SQLite is given none; no value for a server.
    std::optional<std::filesystem::path> file;
};

} // namespace MOD
