// What becomes of the host when its database isn't as it should be: it starts and reports as ever,
// or it doesn't start and says once what is wrong, without the password.
#include "CuttingProxy.h"
#include "DemoHost.h"

#include <gmock/gmock.h>

#include <functional>
#include <random>
#include <set>

namespace trust {

using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

class DatabaseFault : public testing::TestWithParam<char const*> {
protected:
    std::unique_ptr<ReferenceServer> server = makeServer(GetParam());
    DemoHost demo;
};

// The one problem of the start names all of these.
void expectProblem(DemoOutcome const& outcome, std::vector<std::string> const& texts) {
    ASSERT_EQ(outcome.problems.size(), 1U) << testing::PrintToString(outcome.problems);
    for (auto const& text : texts) {
        EXPECT_THAT(lowered(outcome.problems.front()), HasSubstr(lowered(text)));
    }
    EXPECT_FALSE(outcome.tells("tiger"));
}

// What was broken while the host started either came too late or is reported. Returns which.
bool startsOrTells(DemoOutcome const& outcome) {
    EXPECT_TRUE(!outcome.problems.empty() || outcome.reports == DemoHost::goldenReports());
    for (auto const& problem : outcome.problems) {
        EXPECT_THAT(problem, HasSubstr("Database error: "));
    }
    EXPECT_EQ(std::set(outcome.log.begin(), outcome.log.end()).size(), outcome.log.size());
    EXPECT_FALSE(outcome.tells("tiger"));
    return outcome.problems.empty();
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Kinds, DatabaseFault, testing::Values("sqlite", "postgresql"),
                         [](auto const& tested) { return tested.param; });

TEST_P(DatabaseFault, EachTableAndColumnThatIsMissingIsNamed) {
    EXPECT_TRUE(startsOrTells(demo.run(server->connection())));
    std::string table;
    for (auto const& column : schemaColumns()) {
        auto const alter = "ALTER TABLE " + column.table + " RENAME ";
        if (column.table != table) {
            table = column.table;
            server->run(alter + "TO AWAY;");
            expectProblem(demo.run(server->connection()), {"Database error", table});
            server->run("ALTER TABLE AWAY RENAME TO " + table + ";");
        } else if (GetParam() == std::string("postgresql")) {
            continue; // the statements differ by table
        }
        server->run(alter + "COLUMN " + column.name + " TO AWAY;");
        expectProblem(demo.run(server->connection()), {"Database error", table, column.name});
        server->run(alter + "COLUMN AWAY TO " + column.name + ";");
    }
    EXPECT_TRUE(startsOrTells(demo.run(server->connection())));
}

TEST_P(DatabaseFault, NullInAllColumnsLeavesOutEachRowOnce) {
    std::string all;
    std::size_t rows = 0;
    std::string table;
    for (auto const& column : schemaColumns()) {
        if (column.table != table && !column.table.starts_with("KWL_")) {
            rows += std::stoul(server->text("SELECT count(*) FROM " + column.table + ";"));
        }
        table = column.table;
        all += "UPDATE " + table + " SET " + column.name + " = NULL;\n";
    }
    server->run(all);
    auto const outcome = demo.run(server->connection());
    expectProblem(outcome, {"service field map", "Main"});
    EXPECT_EQ(std::count_if(outcome.log.begin(), outcome.log.end(),
                            [](auto const& entry) { return entry.starts_with("ERR_ROW_REJ"); }),
              rows);
}

TEST(SqliteFault, NullInOneColumnLeavesOutItsRowsUnlessTheSchemaExplainsIt) {
    SqliteServer const server;
    DemoHost const demo;
    auto const pristine = fileText(server.file());
    for (auto const& column : schemaColumns()) {
        SCOPED_TRACE(column.table + "." + column.name);
        std::ofstream(server.file(), std::ios::binary) << pristine;
        server.run("UPDATE " + column.table + " SET " + column.name + " = NULL;");
        auto const outcome = demo.run(server.connection());
        if (column.table.starts_with("KWL_")) {
            EXPECT_EQ(outcome.problems.size(), column.isOptional ? 0U : 1U);
            continue;
        }
        EXPECT_THAT(outcome.problems, IsEmpty());
        auto const rows = std::stol(server.text("SELECT count(*) FROM " + column.table + ";"));
        auto const rejected = "[" + column.table + "] ";
        auto const reason = "[" + column.name + " is missing]";
        EXPECT_EQ(std::count_if(outcome.log.begin(), outcome.log.end(),
                                [&](auto const& entry) {
                                    return entry.find(rejected) != std::string::npos &&
                                           entry.find(reason) != std::string::npos;
                                }),
                  column.isOptional ? 0 : rows);
    }
}

TEST(SqliteFault, AFileThatIsNoDatabaseIsToldOnce) {
    SqliteServer const server;
    DemoHost const demo;
    auto const file = server.file();
    struct {
        std::function<void()> fault;
        std::vector<std::string> told;
    } const cases[] = {
        {[&] { std::filesystem::remove(file); }, {file, "does not exist"}},
        {[&] { std::filesystem::create_directory(file); }, {file, "cannot open the database"}},
        {[&] {
             std::filesystem::remove(file);
             std::filesystem::create_symlink(file, file);
         },
         {file, "does not exist"}},
    };
    for (auto const& each : cases) {
        std::filesystem::remove(file);
        each.fault();
        expectProblem(demo.run(server.connection()), each.told);
        std::error_code error;
        EXPECT_FALSE(std::filesystem::is_regular_file(file, error)) << "made";
    }
}

TEST(SqliteFault, ADatabaseThatBreaksWhileTheHostStartsIsTold) {
    SqliteServer const server;
    DemoHost const demo;
    auto const pristine = fileText(server.file());
    std::size_t told = 0;
    for (std::string const command :
         {"rm -f", "truncate -s 0", "truncate -s 20000", "truncate -s 60001", "cp /bin/sh"}) {
        for (auto const* const before :
             {"CustomerData", "DiscountData", "PriceData", "Pipelines"}) {
            SCOPED_TRACE(command + " before " + before);
            std::filesystem::remove(server.file());
            std::ofstream(server.file(), std::ios::binary) << pristine;
            auto const outcome =
                demo.run(server.connection(), command + " '" + server.file() + "'", before);
            told += startsOrTells(outcome) ? 0 : 1;
        }
    }
    EXPECT_EQ(told, 20U);
}

TEST(SqliteFault, ALockedDatabaseIsToldByEachModule) {
    SqliteServer const server;
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(server.file().c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN EXCLUSIVE;", nullptr, nullptr, nullptr), SQLITE_OK);
    auto const outcome = DemoHost().run(server.connection());
    EXPECT_THAT(outcome.problems, testing::SizeIs(5));
    EXPECT_THAT(outcome.problems, testing::Each(HasSubstr("database is locked")));
    sqlite3_close(other);
    EXPECT_TRUE(startsOrTells(DemoHost().run(server.connection())));
}

// Any bytes in any page: rows may be left out, but nothing else goes wrong.
TEST(SqliteFault, DamagedPagesNeverDoHarm) {
    SqliteServer const server;
    DemoHost const demo;
    auto const pristine = fileText(server.file());
    constexpr std::size_t pageSize = 4096;
    std::mt19937 random(1);
    std::size_t told = 0;
    for (std::size_t page = 0; page < pristine.size(); page += pageSize) {
        auto damaged = pristine;
        for (int i = 0; i < 64; ++i) {
            damaged[page + random() % pageSize] = static_cast<char>(random());
        }
        std::ofstream(server.file(), std::ios::binary) << damaged;
        auto const outcome = demo.run(server.connection());
        told += outcome.problems.empty() && outcome.reports == DemoHost::goldenReports() ? 0 : 1;
        EXPECT_TRUE(!outcome.problems.empty() || !outcome.reports.empty());
    }
    EXPECT_GT(told, 0U);
}

TEST(PostgresqlFault, AServerThatHangsUpWhileTheHostStartsIsTold) {
    PostgresqlServer const server;
    DemoHost const demo;
    auto const parameters = PostgresqlServer::parameters();
    auto const directory = parameters.substr(5, parameters.find(' ') - 5);
    auto const runThrough = [&](CuttingProxy& proxy) {
        return demo.run("postgresql://host=" + proxy.directory() +
                        parameters.substr(parameters.find(' ')) + "reference");
    };
    std::size_t bytes = 0;
    {
        CuttingProxy whole(directory, std::size_t{1} << 40);
        EXPECT_TRUE(startsOrTells(runThrough(whole)));
        bytes = whole.bytesSent();
    }
    constexpr std::size_t cuts = 60;
    std::size_t started = 0;
    for (std::size_t cut = 0; cut < cuts; ++cut) {
        SCOPED_TRACE(bytes * cut / cuts);
        CuttingProxy proxy(directory, bytes * cut / cuts);
        started += startsOrTells(runThrough(proxy)) ? 1 : 0;
    }
    EXPECT_LT(started, cuts / 10);
}

TEST(PostgresqlFault, AServerOutOfReachIsToldOnceWithoutThePassword) {
    for (std::string const parameters :
         {"host=/nowhere password=tiger", "password=my tiger host=/nowhere",
          "host=/nowhere password='a tiger' user=x", "postgresql://me:the tiger@%2Fnowhere/x",
          "host=/nowhere password=tiger\\\\ x", "postgresql://me:a%tiger@/x"}) {
        SCOPED_TRACE(parameters);
        auto const outcome = DemoHost().run("postgresql://" + parameters);
        expectProblem(outcome, {"cannot open the database", "***"});
        EXPECT_TRUE(outcome.tells("MSG_MODULE_LEFT_OUT"));
    }
}

} // namespace trust
