// The pipeline's name goes into a statement as a bound value and into the log as text, whatever it
// is, and the service fields that it selects may be many.
#include "DataDump/PlugInFixture.h"
#include "ReferenceServer.h"
#include "base/LogFile.h"

#include <sys/resource.h>

#include <chrono>
#include <iostream>

namespace DataDumpTest {

namespace {

std::string const hostileNames[] = {"'",
                                    "''",
                                    "\"",
                                    "`",
                                    ";",
                                    "; DROP TABLE KWL_ALIAS_MAP; --",
                                    "'; DROP TABLE KWL_PIPELINE; --",
                                    "' OR '1'='1",
                                    "') OR (1=1",
                                    "' UNION SELECT * FROM KWL_EDRC_FIELD --",
                                    "\\'; DELETE FROM ACCOUNT; --",
                                    "$1$$",
                                    ":v1 :v2 ?",
                                    "%s%n_%",
                                    "/*",
                                    "\n2026-11-21T00:00:00Z critical - -",
                                    "\r\t\x1b[31m",
                                    "\x01\x7f\xc2\x9b",
                                    "\xc3\xa4\xe2\x82\xac",
                                    std::string(300, '\'')};

std::string literal(std::string text) {
    for (auto at = text.find('\''); at != std::string::npos; at = text.find('\'', at + 2)) {
        text.insert(at, 1, '\'');
    }
    return "'" + text + "'";
}

class PipelineName : public PlugInFixture, public testing::WithParamInterface<char const*> {
protected:
    PipelineName() {
        support::describeField(description, "DETAIL.IMSI");
        support::describeField(description, "DETAIL.USER_NAME");
        start();
    }

    // The plug-in in a pipeline of that name, which has no dot.
    std::unique_ptr<Probe> startIn(std::string const& name) {
        auto const full = "Pipelines." + name + ".Functions.DataDump.Module";
        registry.add(full + ".AccountDataModule", "Other");
        PLG::Pipeline const own("host.Pipelines." + name, factory, registry.pipelineLog);
        return std::make_unique<Probe>("host." + full);
    }

    std::unique_ptr<trust::ReferenceServer> server = trust::makeServer(GetParam());
    Database open{server->connection()}; // for writing too
    AccountModule other{"Other.Module", &open, calls};
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Kinds, PipelineName, testing::Values("sqlite", "postgresql"),
                         [](auto const& tested) { return tested.param; });

TEST_P(PipelineName, IsAValueAndNothingElse) {
    auto before = server->contents();
    std::string insert;
    for (auto const& name : hostileNames) {
        auto const unknown = startIn(name);
        EXPECT_FALSE(unknown->isUsable());
        EXPECT_EQ(registry.log.entries().back(),
                  "ERR_EMPTY_SERVICE_FIELD_MAP(4) [" + name + "] @" + unknown->name().str());
        auto const record = host::logRecord(unknown->status(), {});
        EXPECT_TRUE(std::none_of(record.begin(), record.end() - 1, [](unsigned char c) {
            return c < ' ' || c == 0x7f;
        })) << record;
        insert += name.size() > 255 ? ""
                                    : "INSERT INTO KWL_PIPELINE VALUES (" + literal(name) +
                                          ", 'RATED_EVENTS');\n";
    }
    EXPECT_EQ(server->contents(), before);
    server->run(insert);
    before = server->contents();
    for (auto const& name : hostileNames) {
        EXPECT_EQ(startIn(name)->isUsable(), name.size() <= 255) << name;
    }
    EXPECT_EQ(server->contents(), before);
}

TEST_P(PipelineName, MaySelectAnyNumberOfAliases) {
    char const* const asked = std::getenv("DATABASE_ALIAS_ROWS");
    std::string const rows = asked == nullptr ? "200000" : asked;
    server->run(
        "INSERT INTO KWL_PIPELINE VALUES ('Large', 'RATED_EVENTS');"
        "INSERT INTO KWL_ALIAS_MAP SELECT 'S' || I, 'Account_CustA', 'RATED_EVENTS', 1 FROM " +
        server->numbersUpTo(rows) + ";");
    auto const begin = std::chrono::steady_clock::now();
    auto const started = startIn("Large");
    std::chrono::duration<double> const seconds = std::chrono::steady_clock::now() - begin;
    rusage used{};
    ::getrusage(RUSAGE_SELF, &used);
    std::cout << GetParam() << ": " << rows << " aliases in " << seconds.count() << " s, at most "
              << used.ru_maxrss / 1024 << " MiB of the process so far\n";
    EXPECT_TRUE(started->isUsable());
    EXPECT_EQ(started->serviceFieldMap.size(), std::stoul(rows) + 5);
}

} // namespace DataDumpTest
