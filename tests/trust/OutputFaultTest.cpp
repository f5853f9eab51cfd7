// What becomes of a report when its file can't be had or written to the end, and of the pipeline:
// the report is lost without a word, and nothing else is.
#include "DataDump/PlugInFixture.h"

#include <sched.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <random>

namespace DataDumpTest {

namespace {

// A limit of this process, as long as the object lives.
class Limit {
public:
    Limit(__rlimit_resource resource, rlim_t value) : resourceM(resource) {
        ::getrlimit(resource, &beforeM);
        rlimit const limited{value, beforeM.rlim_max};
        ::setrlimit(resource, &limited);
    }
    Limit(Limit const&) = delete;
    Limit& operator=(Limit const&) = delete;
    ~Limit() { ::setrlimit(resourceM, &beforeM); }

private:
    __rlimit_resource resourceM;
    rlimit beforeM{};
};

// Does what a test wants done when a dump has come to a balance.
class BalanceHook : public DAT::Balance::PlugIn {
public:
    BalanceHook() : PlugIn("host.DataPool.Hook.Module", "1") {}
    void getDataDump(std::ostream&, RWTValOrderedVector<unsigned long> const&) const override {
        hook();
    }
    std::function<void()> hook = [] {};
};

class OutputFault : public PlugInFixture {
protected:
    static constexpr int events = 200;

    OutputFault() {
        keys["NumberOfEvents"] = std::to_string(events);
        keys["BalanceDataModule"] = "Hook";
        start();
        for (int customer = 0; customer < events; ++customer) {
            processCustomer(std::to_string(customer).c_str());
        }
    }

    bool dump(char const* command, std::string const& path) {
        BAS::ProtectedBool workDone;
        return update({{command, path}}, workDone) && workDone.value();
    }
    std::string pathOf(std::string const& name) const { return (directory.path() / name).string(); }

    BalanceHook balance;
};

TEST_F(OutputFault, LosesTheReportWithoutAWordAndNothingElse) {
    constexpr rlim_t sizeLimit = 65536;
    std::signal(SIGXFSZ, SIG_IGN);
    std::unique_ptr<Limit> limit;
    struct {
        char const* command;
        std::string path;
        std::function<void()> fault;
        std::string left; // in the file
    } const cases[] = {
        {"DumpEvents", "/dev/full", [] {}, ""},
        {"Dump", "/dev/full", [] {}, ""},
        {"DumpEvents", pathOf("missing/out"), [] {}, ""},
        {"DumpEvents", pathOf(""), [] {}, ""},
        {"DumpEvents", std::string(5000, 'x'), [] {}, ""},
        {"DumpEvents", pathOf("big"),
         [&] { limit = std::make_unique<Limit>(RLIMIT_FSIZE, sizeLimit); },
         report().substr(0, sizeLimit)},
        {"DumpEvents", pathOf("many"), [&] { limit = std::make_unique<Limit>(RLIMIT_NOFILE, 3); },
         ""},
        {"Dump", pathOf("gone/out"),
         [&] {
             std::filesystem::create_directory(pathOf("gone"));
             balance.hook = [&] { std::filesystem::remove_all(pathOf("gone")); };
         },
         ""},
    };
    auto const expected = report();
    ASSERT_GT(expected.size(), sizeLimit);
    for (auto const& each : cases) {
        SCOPED_TRACE(each.command + (" " + each.path));
        each.fault();
        bool const isHandled = dump(each.command, each.path);
        limit.reset();
        balance.hook = [] {};
        EXPECT_TRUE(isHandled);
        EXPECT_THAT(registry.log.entries(), testing::IsEmpty());
        EXPECT_EQ(report(), expected);
        std::error_code error;
        if (std::filesystem::is_regular_file(each.path, error)) {
            EXPECT_EQ(directory.read(std::filesystem::path(each.path).filename()), each.left);
        } else {
            EXPECT_EQ(each.left, "");
        }
        EXPECT_TRUE(dump("DumpEvents", pathOf("good")));
        EXPECT_EQ(directory.read("good"), expected);
    }
}

// In a child, for the small file system is to be nobody else's.
TEST_F(OutputFault, KeepsWhatFitsIntoASmallFileSystem) {
    enum Outcome { asExpected, different, notPermitted };
    constexpr std::size_t size = 65536;
    auto const expected = report();
    auto const child = ::fork();
    if (child == 0) {
        auto const mountPoint = pathOf("small");
        std::filesystem::create_directory(mountPoint);
        if (::unshare(CLONE_NEWNS) != 0 ||
            ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            ::mount("none", mountPoint.c_str(), "tmpfs", 0, "size=64k") != 0) {
            ::_exit(notPermitted);
        }
        bool const isHandled = dump("DumpEvents", mountPoint + "/out");
        bool const isPrefix = directory.read("small/out") == expected.substr(0, size);
        ::_exit(isHandled && isPrefix && report() == expected ? asExpected : different);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    if (WEXITSTATUS(status) == notPermitted) {
        GTEST_SKIP() << "mounting a file system is not permitted here";
    }
    EXPECT_EQ(status, asExpected);
}

TEST_F(OutputFault, KeepsEveryFinishedLineWhenTheProcessIsKilled) {
    ASSERT_TRUE(dump("Dump", pathOf("whole")));
    auto const whole = directory.read("whole");
    auto* const shared = ::mmap(nullptr, sizeof(std::atomic<unsigned>), PROT_READ | PROT_WRITE,
                                MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(shared, MAP_FAILED);
    auto& balances = *new (shared) std::atomic<unsigned>(0);
    balance.hook = [&] { ++balances; };
    std::mt19937 random(1);
    for (int kill = 0; kill < 250; ++kill) {
        balances = 0;
        auto const moment = random() % events;
        auto const child = ::fork();
        if (child == 0) {
            dump("Dump", pathOf("torn"));
            ::_exit(0);
        }
        while (balances < moment && ::waitpid(child, nullptr, WNOHANG) == 0) {
        }
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);

        auto const torn = directory.read("torn");
        ASSERT_TRUE(whole.starts_with(torn)) << "killed at event " << moment;
        // What stood in front of the last balance that was asked for was finished.
        std::string const lastLine = "\n\n\nEvent's owner Balance Information:0\n";
        std::size_t end = 0;
        for (unsigned i = 0; i < balances; ++i) {
            end = whole.find(lastLine, end) + lastLine.size();
        }
        ASSERT_GE(torn.size(), end) << "killed at event " << moment;
    }
    ::munmap(shared, sizeof(std::atomic<unsigned>));
}

} // namespace

} // namespace DataDumpTest

// The demo's pipeline, first without a limit, then with one that its first report meets.
TEST(OutputFaultOfTheProgram, TellsWhatWasWrittenAndGoesOn) {
    support::TemporaryDirectory const directory;
    auto const demo = directory.path().string();
    std::string const object = "host.Pipelines.Main.Functions.DataDump.Module";
    ASSERT_EQ(std::system((RUN_DEMO " " BUILD_TREE " " + demo + " >/dev/null 2>&1").c_str()), 0);
    auto const whole = directory.read("events.txt");
    ASSERT_GT(whole.size(), 4096U);
    auto const command = "cd " + demo + " && ulimit -f 8 && " BUILD_TREE "/bin/pipeline-host run " +
                         "registry.yaml --quiet --log-level error" + " --at-end '" + object +
                         " DumpEvents=./limited'" + " --at-end '" + object +
                         " DumpEvents=/dev/full'" + " --at-end '" + object +
                         " DumpEvents=./no/out'" + " --at-end '" + object +
                         " DumpEvents=/dev/stderr' >out 2>again";
    EXPECT_EQ(WEXITSTATUS(std::system(command.c_str())), 1); // not every report is whole
    EXPECT_EQ(directory.read("limited"), whole.substr(0, 4096));
    EXPECT_EQ(directory.read("again"), whole.substr(0, 4096));
    auto const results = directory.read("out");
    EXPECT_THAT(results, testing::HasSubstr("/limited', 4096 bytes"));
    EXPECT_THAT(results, testing::HasSubstr("DumpEvents wrote '/dev/full', 0 bytes"));
    EXPECT_THAT(results, testing::HasSubstr("/no/out': the directory '"));
}
