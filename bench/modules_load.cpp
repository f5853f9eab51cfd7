// Measures what loading a reference database takes: rows a second and bytes a row, table by table,
// on a generated SQLite database that is kept for the next run.
//
//   modules_load SCHEMA DATABASE [ACCOUNTS]
//
// Each account has an identifier, a service, a product, a discount, a balance group and five
// balances with one part each; 200,000 accounts without ACCOUNTS.
#include "AccountData.h"
#include "BalanceData.h"

#include <fmt/format.h>
#include <malloc.h>
#include <sqlite3.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace {

void run(sqlite3* database, std::string const& statements) {
    if (sqlite3_exec(database, statements.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        throw std::runtime_error(sqlite3_errmsg(database));
    }
}

// {0} is the number of accounts; numbers is a table of the whole numbers from 1 to it.
constexpr char const* rows = R"(
    CREATE TEMP TABLE NUMBERS AS
        WITH RECURSIVE COUNTED(N) AS (SELECT 1 UNION ALL SELECT N + 1 FROM COUNTED WHERE N < {0})
        SELECT N FROM COUNTED;
    INSERT INTO ACCOUNT SELECT N, 'ACTIVE', 'EUR', CASE WHEN N > 1 THEN N / 2 END FROM NUMBERS;
    INSERT INTO CUSTOMER_IDENTIFIER SELECT '4917' || (10000000 + N * 7919 % 9999991), N
        FROM NUMBERS;
    INSERT INTO ACCOUNT_SERVICE SELECT N, 3 * N, '/service/telco', 'user' || N || '@example.org',
        'ACTIVE' FROM NUMBERS;
    INSERT INTO ACCOUNT_PRODUCT SELECT N, 6 * N, 'PLAN_' || N % 50, NULL, '*', 'ACTIVE',
        '2026-01-01T00:00:00Z', NULL FROM NUMBERS;
    INSERT INTO ACCOUNT_DISCOUNT SELECT N, 5 * N, 'MODEL_' || N % 50, NULL, '*', 'ACTIVE',
        '2026-01-01T00:00:00Z', '2027-01-01T00:00:00Z' FROM NUMBERS;
    INSERT INTO BALANCE_GROUP SELECT N, N FROM NUMBERS;
    INSERT INTO BALANCE SELECT N, 'RESOURCE_' || K, 'unit', (N * 31 % 100000) / 100 || '.' || 10 + K,
        CASE K WHEN 1 THEN '150.00' END, '2026-01-01T00:00:00Z', NULL
        FROM NUMBERS, (SELECT N AS K FROM NUMBERS WHERE N <= 5);
    INSERT INTO SUB_BALANCE SELECT BALANCE_GROUP_ID, RESOURCE, 1, AMOUNT, VALID_FROM, VALID_TO
        FROM BALANCE;
)";

void generate(char const* schemaFile, std::string const& file, std::string const& accounts) {
    sqlite3* database = nullptr;
    sqlite3_open(file.c_str(), &database);
    std::ifstream in(schemaFile);
    std::string const schema(std::istreambuf_iterator<char>(in), {});
    run(database, "BEGIN;" + schema + fmt::format(fmt::runtime(rows), accounts) + "COMMIT;");
    sqlite3_close(database);
}

std::size_t heapBytes() {
    auto const info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

template <class Data>
void measure(char const* name, std::string const& file, std::size_t rowCount) {
    RWDBConnection const connection("sqlite3://db=" + file + " readonly=true");
    std::size_t rejected = 0;
    auto const heapBefore = heapBytes();
    auto const begin = std::chrono::steady_clock::now();
    Data data;
    data.load(connection, [&](auto const&...) { ++rejected; });
    auto const took = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin);
    auto const bytes = heapBytes() - heapBefore;
    auto const count = static_cast<double>(rowCount);
    fmt::print("{:<8} {:>9} rows {:>6.2f} s {:>9.0f} rows/s {:>6.1f} bytes/row {:>3} rejected\n",
               name, rowCount, took.count(), count / took.count(),
               static_cast<double>(bytes) / count, rejected);
}

void measureAll(char const* schemaFile, std::string const& file, std::string const& accounts) {
    if (!std::filesystem::exists(file)) {
        generate(schemaFile, file, accounts);
    }
    auto const count = std::stoul(accounts);
    measure<MOD::AccountData>("account", file, count * 5);
    measure<MOD::BalanceData>("balance", file, count * 11);
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        fmt::print(stderr, "modules_load SCHEMA DATABASE [ACCOUNTS]\n");
        return EXIT_FAILURE;
    }
    try {
        measureAll(argv[1], argv[2], argc > 3 ? argv[3] : "200000");
        return EXIT_SUCCESS;
    } catch (std::exception const& error) {
        std::fputs(error.what(), stderr);
        return EXIT_FAILURE;
    }
}
