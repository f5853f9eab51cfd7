// A reference database of a test: an SQLite file made by the schema script, gone with the object.
#pragma once

#include "TableLoader.h"

#include "support/SqliteFile.h"
#include "support/TemporaryDirectory.h"

#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

class ReferenceDatabase {
public:
    explicit ReferenceDatabase(std::string const& rows = "") {
        std::ifstream schema(REFERENCE_SCHEMA);
        run(std::string(std::istreambuf_iterator<char>(schema), {}) + rows);
    }

    std::filesystem::path const& directory() const { return directoryM.path(); }
    RWDBConnection connection() const { return RWDBConnection("sqlite3://db=" + file()); }

    // Throws std::runtime_error when SQLite refuses a statement.
    void run(std::string const& statements) const {
        support::runSql(file(), "BEGIN; " + statements + "COMMIT;");
    }

private:
    std::string file() const { return (directory() / "reference.db").string(); }

    support::TemporaryDirectory directoryM;
};

// Data loaded from a database, with what was said about each row that was left out.
template <class Data>
struct Loaded {
    explicit Loaded(ReferenceDatabase const& database) {
        data.load(database.connection(),
                  [this](auto const& table, auto const& key, auto const& reason) {
                      rejected.push_back(table + " | " + key + " | " + reason);
                  });
    }

    Data data;
    std::vector<std::string> rejected;
};

// What a dump writes to a stream that is set up as the plug-in sets it up.
template <class Dump>
std::string dumped(Dump const& dump) {
    std::ostringstream out;
    out.width(2);
    dump(out);
    return out.str();
}
