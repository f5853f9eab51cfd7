// Reference databases with the demo's data, of every kind that there is, and what tests do to them.
#pragma once

#include "support/SqliteFile.h"
#include "support/TemporaryDirectory.h"

#include <cstdlib>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace trust {

inline std::string fileText(std::filesystem::path const& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        throw std::runtime_error("no file " + file.string());
    }
    return {std::istreambuf_iterator<char>(in), {}};
}

struct Column {
    std::string table;
    std::string name;
    bool isOptional; // the schema script explains its NULL
};

// The columns of the schema script.
inline std::vector<Column> schemaColumns() {
    std::istringstream lines(fileText(REFERENCE_SCHEMA));
    std::vector<Column> columns;
    std::string table;
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string word;
        std::string type;
        words >> word >> type;
        if (line.starts_with("CREATE TABLE")) {
            words >> word;
            table = line.substr(13, line.find(' ', 13) - 13);
        } else if (type.starts_with("BIGINT") || type.starts_with("VARCHAR")) {
            columns.push_back({table, word, line.find("NULL:") != std::string::npos});
        }
    }
    return columns;
}

class ReferenceServer {
public:
    virtual ~ReferenceServer() = default;

    // As the database module takes it.
    virtual std::string connection() const = 0;
    // Runs statements; throws std::runtime_error when the database refuses one.
    virtual void run(std::string const& statements) const = 0;
    // What the statements select.
    virtual std::string text(std::string const& statements) const = 0;
    // A number from 1 up, as a FROM clause.
    virtual std::string numbersUpTo(std::string const& last) const = 0;

    // Everything that is in it.
    std::string contents() const {
        std::string statements;
        std::string table;
        for (auto const& column : schemaColumns()) {
            if (column.table != table) {
                table = column.table;
                statements += "SELECT '" + table + "'; SELECT * FROM " + table + ";\n";
            }
        }
        return text(statements);
    }

protected:
    void fill() const { run(fileText(REFERENCE_SCHEMA) + fileText(DEMO "/reference-data.sql")); }
};

class SqliteServer : public ReferenceServer {
public:
    SqliteServer() { fill(); }

    std::string file() const { return (directoryM.path() / "reference.db").string(); }
    std::string connection() const override { return "sqlite3://db=" + file(); }
    void run(std::string const& statements) const override {
        support::runSql(file(), "BEGIN;" + statements + "COMMIT;");
    }
    std::string text(std::string const& statements) const override {
        return support::runSql(file(), statements);
    }
    std::string numbersUpTo(std::string const& last) const override {
        return "(WITH RECURSIVE N(I) AS (SELECT 1 UNION ALL SELECT I + 1 FROM N WHERE I < " + last +
               ") SELECT I FROM N) NUMBERS";
    }

private:
    support::TemporaryDirectory directoryM;
};

// A database of the server that tests/support/with-postgresql lends.
class PostgresqlServer : public ReferenceServer {
public:
    PostgresqlServer() {
        psql("postgres",
             "DROP DATABASE IF EXISTS reference WITH (FORCE);\nCREATE DATABASE reference;\n");
        fill();
    }

    static std::string parameters() {
        char const* const server = std::getenv("POSTGRESQL_SERVER");
        if (server == nullptr) {
            throw std::runtime_error("no server: run this by tests/support/with-postgresql");
        }
        return std::string(server) + " dbname=";
    }
    std::string connection() const override { return "postgresql://" + parameters() + "reference"; }
    void run(std::string const& statements) const override { text(statements); }
    std::string text(std::string const& statements) const override {
        return psql("reference", statements);
    }
    std::string numbersUpTo(std::string const& last) const override {
        return "generate_series(1, " + last + ") NUMBERS(I)";
    }

private:
    std::string psql(std::string const& database, std::string const& statements) const {
        auto const path = [&](char const* name) { return (directoryM.path() / name).string(); };
        directoryM.write("in", statements);
        auto const command = "psql -X -q -A -t -v ON_ERROR_STOP=1 -d '" + parameters() + database +
                             "' -f " + path("in") + " >" + path("out") + " 2>" + path("err");
        if (std::system(command.c_str()) != 0) {
            throw std::runtime_error("SQL: " + directoryM.read("err"));
        }
        return directoryM.read("out");
    }

    support::TemporaryDirectory directoryM;
};

inline std::unique_ptr<ReferenceServer> makeServer(std::string const& kind) {
    if (kind == "postgresql") {
        return std::make_unique<PostgresqlServer>();
    }
    return std::make_unique<SqliteServer>();
}

} // namespace trust
