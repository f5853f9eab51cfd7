// The first line names a data module. Rows of the reference database follow, one a line: the table
// and the values, with a '|' between them. A value that isn't there is NULL.
#include "AccountData.h"
#include "BalanceData.h"
#include "DiscountData.h"
#include "FuzzInput.h"
#include "PriceData.h"
#include "RateplanData.h"

#include <sqlite3.h>

#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>

namespace {

using Row = std::vector<std::string>;

// The reference database, in memory; SQLite shares it with the connections of the process.
class Database {
public:
    Database() {
        sqlite3_config(SQLITE_CONFIG_URI, 1);
        fuzz::promise(sqlite3_open(name, &databaseM) == SQLITE_OK, "a database");
        std::ifstream schema(REFERENCE_SCHEMA);
        run(std::string(std::istreambuf_iterator<char>(schema), {}));
        sqlite3_exec(
            databaseM,
            "SELECT t.name, COUNT(*) FROM sqlite_master t, pragma_table_info(t.name) GROUP BY 1",
            [](void* self, int, char** values, char**) {
                static_cast<Database*>(self)->prepare(values[0], std::stoi(values[1]));
                return 0;
            },
            this, nullptr);
        fuzz::promise(!insertsM.empty(), "a database with tables");
    }

    void replaceRows(std::vector<Row> const& rows) {
        for (auto const& table : filledM) {
            run("DELETE FROM " + table);
        }
        filledM.clear();
        for (auto const& row : rows) {
            insert(row);
        }
    }

    static constexpr char const* name = "file:rows?mode=memory&cache=shared";

private:
    void run(std::string const& sql) const {
        fuzz::promise(sqlite3_exec(databaseM, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK,
                      sql);
    }
    void prepare(std::string const& table, int columns) {
        auto sql = "INSERT INTO " + table + " VALUES (?";
        for (int i = 1; i < columns; ++i) {
            sql += ",?";
        }
        sqlite3_prepare_v2(databaseM, (sql + ")").c_str(), -1, &insertsM[table], nullptr);
    }
    void insert(Row const& row) {
        auto const found = insertsM.find(row.front());
        if (found == insertsM.end()) {
            return;
        }
        filledM.insert(found->first);
        auto* const statement = found->second;
        sqlite3_clear_bindings(statement);
        for (std::size_t i = 1; i < row.size(); ++i) {
            sqlite3_bind_text(statement, static_cast<int>(i), row[i].data(),
                              static_cast<int>(row[i].size()), SQLITE_STATIC);
        }
        fuzz::promise(sqlite3_step(statement) == SQLITE_DONE, "a row can be put in");
        sqlite3_reset(statement);
    }

    sqlite3* databaseM = nullptr;
    std::map<std::string, sqlite3_stmt*> insertsM; // by table
    std::set<std::string> filledM;
};

// What a module said.
struct Answers {
    std::string dump;
    std::vector<std::string> rejected; // in no order

    friend bool operator==(Answers const&, Answers const&) = default;
};

struct Question {
    BAS::String text;
    BAS::String second;
    unsigned long number = 0;
    long secondNumber = 0;
};
using Texts = RWTValOrderedVector<BAS::String>;

void ask(MOD::AccountData const& data, std::ostream& out, Question const& asked) {
    data.dump(out, {asked.text.view(), static_cast<long>(asked.number), asked.second.view(),
                    asked.second.view()});
}
void ask(MOD::RateplanData const& data, std::ostream& out, Question const& asked) {
    data.dump(out, {asked.text.view(), asked.secondNumber, "s", "c", "i"});
}
void ask(MOD::PriceData const& data, std::ostream& out, Question const& asked) {
    data.dump(out, Texts{asked.text});
}
void ask(MOD::BalanceData const& data, std::ostream& out, Question const& asked) {
    data.dump(out, {asked.number});
}
void ask(MOD::DiscountData const& data, std::ostream& out, Question const& asked) {
    data.dumpDiscounts(out, {asked.number});
    data.dumpSponsorships(out, {asked.number});
    data.dumpModels(out, Texts{asked.text});
}

// Loads a module's data and asks it with the first two values of each row.
template <class Data>
Answers answers(std::vector<Row> const& rows) {
    Answers given;
    Data data;
    RWDBConnection const connection(std::string("sqlite3://db=") + Database::name);
    data.load(connection, [&](auto const& table, auto const& key, auto const& reason) {
        fuzz::promise(!key.empty() && !reason.empty(),
                      "a rejected row is reported with its reason");
        given.rejected.push_back(table + " " + key + " " + reason);
    });
    std::sort(given.rejected.begin(), given.rejected.end());
    std::ostringstream out;
    for (auto const& row : rows) {
        Question asked{row.size() > 1 ? row[1] : "", row.size() > 2 ? row[2] : ""};
        asked.text.toNum(asked.number);
        asked.second.toNum(asked.secondNumber);
        out.width(2);
        ask(data, out, asked);
    }
    given.dump = out.str();
    return given;
}

struct Module {
    char const* name;
    Answers (*answers)(std::vector<Row> const& rows);
};
constexpr Module modules[] = {
    {"account", answers<MOD::AccountData>},   {"rateplan", answers<MOD::RateplanData>},
    {"price", answers<MOD::PriceData>},       {"balance", answers<MOD::BalanceData>},
    {"discount", answers<MOD::DiscountData>},
};

} // namespace

// What a module says doesn't depend on the order in which the rows were put in.
int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static Database database;
    auto const lines = fuzz::pieces(fuzz::textOf(data, size), '\n');
    auto const* const module =
        std::find_if(std::begin(modules), std::end(modules),
                     [&](Module const& each) { return each.name == lines.front(); });
    if (module == std::end(modules)) {
        return 0;
    }
    std::vector<Row> rows;
    for (auto line = lines.begin() + 1; line < lines.end(); ++line) {
        rows.push_back(fuzz::pieces(*line, '|'));
    }
    database.replaceRows(rows);
    auto const first = module->answers(rows);
    database.replaceRows({rows.rbegin(), rows.rend()});
    fuzz::promise(module->answers(rows) == first, "the order of rows doesn't show");
    return 0;
}
