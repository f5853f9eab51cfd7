// Commands of a group: what they may write, and what its members can do to the host. The tests run
// as one user who is host and member at once; who may do what on the disk is tested with the
// package.
#include "ServiceFixture.h"

#include <grp.h>
#include <utime.h>

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class GroupCommands : public ServiceFixture {
protected:
    GroupCommands() {
        for (auto const& [name, mode] :
             {std::pair{"cmd", 02710}, std::pair{"cmd/drop", 03770},
              std::pair{"cmd/answers", 02750}, std::pair{"rep", 02750}}) {
            std::filesystem::create_directory(pathOf(name));
            setMode(name, static_cast<mode_t>(mode));
        }
        std::filesystem::create_directory(pathOf("rep/sub"));
        std::filesystem::create_directory(pathOf("else"));
        std::filesystem::create_symlink(pathOf("else"), pathOf("rep/out"));
        directoryM.write("else/kept", "old");
        std::filesystem::create_symlink(pathOf("else/kept"), pathOf("rep/link"));
        writeGroupRegistry("rep");
    }

    void setMode(std::string const& name, mode_t mode) const {
        ASSERT_EQ(::chmod(pathOf(name).c_str(), mode), 0);
    }
    void writeGroupRegistry(std::string const& reports, std::string const& keys = {}) const {
        writeRegistry("{Directory: in}", keys,
                      ", Group: " + std::string(::getgrgid(::getegid())->gr_name) +
                          ", Reports: " + reports);
    }
    // What the host answers a command of the group.
    std::string answer(std::string const& name, std::string const& keys) const {
        drop("cmd/drop/" + name + ".yaml", std::string(object) + ": {" + keys + "}\n");
        auto const file = "cmd/answers/" + name;
        return waitForAnswer(file) ? directoryM.read(file + ".result") : "no answer";
    }
    int send(std::vector<std::string> words) const {
        words.insert(words.begin(), {"send", "r.yaml", object});
        return HostProcess(directoryM.path(), words).wait();
    }
};

TEST_F(GroupCommands, WriteReportsBelowTheirDirectoryAndNowhereElse) {
    auto const inside = pathOf("rep").string();
    struct {
        std::string value;
        char const* written; // null: refused
        std::string told;
    } const cases[] = {
        {"a", "rep/a", "\"Complete\": true"},
        {"@b", "rep/b", "\"Complete\": true"},
        {"sub/c", "rep/sub/c", "\"Path\": \"" + inside + "/sub/c\""},
        {"./sub//d", "rep/sub/d", "\"Path\": \"" + inside + "/sub/d\""},
        {inside + "/e", "rep/e", "\"Path\": \"" + inside + "/e\""},
        {"@" + inside + "/sub/f", "rep/sub/f", "\"Complete\": true"},
        {"@@g", "rep/@g", "\"Complete\": true"},
        {"@-", "cmd/answers/h.report", "\"Complete\": true"},
        {"../else/x", nullptr, "expected a path below '" + inside + "' without '..'"},
        {"@sub/../../else/x", nullptr, "without '..'"},
        {"sub/..", nullptr, "without '..'"},
        {inside + "/../else/x", nullptr, "without '..'"},
        {inside + "x", nullptr, "without '..'"},
        {pathOf("else/x").string(), nullptr, "expected a path below"},
        {"/dev/stdout", nullptr, "expected a path below"},
        {"out/x", nullptr, "leads through no links"},
        {"link", nullptr, "it is a link, expected a regular file or none"},
        {"@link", nullptr, "it is a link, expected a regular file or none"},
        {"sub", nullptr, "it is a directory"},
        {"sub/", nullptr, "expected the path of a file"},
        {".", nullptr, "expected the path of a file"},
        {inside, nullptr, "expected the path of a file"},
        {"missing/x", nullptr, "No such file or directory"},
        {"@", nullptr, "expected a path after '@'"},
    };
    HostProcess const host(directoryM.path(), {"run", "r.yaml"});
    char name = 'a';
    for (auto const& each : cases) {
        auto const result = answer(std::string(1, name++), "Write: \"" + each.value + "\"");
        EXPECT_THAT(result, HasSubstr(each.told)) << each.value;
        EXPECT_THAT(result,
                    HasSubstr(each.written == nullptr ? "Faultless: false" : "Faultless: true"))
            << each.value;
        if (each.written != nullptr) {
            struct stat found = {};
            ASSERT_EQ(::stat(pathOf(each.written).c_str(), &found), 0) << each.value;
            EXPECT_EQ(found.st_mode & 07777U, 0640U);
            EXPECT_EQ(found.st_gid, ::getegid());
            EXPECT_EQ(directoryM.read(each.written), "written\n");
        }
    }
    EXPECT_THAT(names("else"), ElementsAre("kept"));
    EXPECT_EQ(directoryM.read("else/kept"), "old");
    EXPECT_THAT(names("rep"), ElementsAre("@g", "a", "b", "e", "link", "out", "sub"));

    std::string many;
    for (int i = 0; i < 33; ++i) {
        many += (i == 0 ? "k" : ", k") + std::to_string(i) + ": a";
    }
    EXPECT_THAT(answer("many", many), HasSubstr("a command has at most 32 reports"));

    // Values that are no paths are no fault.
    EXPECT_THAT(answer("text", "Count: anything, Number: 5"),
                AllOf(HasSubstr("Faultless: true"), HasSubstr("Files: []")));
    // Who may write to the directory of the commands may do what the host may.
    EXPECT_EQ(send({"Write=else/kept"}), 0);
    EXPECT_EQ(directoryM.read("else/kept"), "written\n");
}

TEST_F(GroupCommands, LeaveTheHostAloneWhateverIsDropped) {
    directoryM.write("secret", "bad secret\n");
    auto const dropped = [&](std::string const& name) { return pathOf("cmd/drop/" + name); };
    std::filesystem::create_symlink(pathOf("secret"), dropped("a.yaml"));
    ASSERT_EQ(::mkfifo(dropped("b.yaml").c_str(), 0600), 0);
    std::filesystem::create_directories(dropped("c.yaml") / "x");
    std::filesystem::create_hard_link(pathOf("secret"), dropped("d.yaml"));
    drop("cmd/drop/e.yaml", std::string((1U << 20U) + 1, '#'));
    drop("cmd/drop/f.yaml", "a: {b: c\n");
    HostProcess host(directoryM.path(), {"run", "r.yaml"});
    EXPECT_THAT(answer("g", "Count: ''"), HasSubstr("Faultless: true"));
    EXPECT_THAT(directoryM.read("cmd/answers/d.result"), HasSubstr("it has further names"));
    EXPECT_THAT(directoryM.read("cmd/answers/e.result"), HasSubstr("larger than 1048576 bytes"));
    EXPECT_THAT(directoryM.read("cmd/answers/f.result"), HasSubstr("not valid YAML"));
    EXPECT_THAT(names("cmd/answers"), ElementsAre("d.result", "e.result", "f.result", "g.result"));
    EXPECT_THAT(names("cmd/drop"), ElementsAre("a.yaml", "b.yaml", "c.yaml"));
    host.signal(SIGTERM);
    EXPECT_EQ(host.wait(), 0);
    auto const log = directoryM.read("err");
    for (auto const* const told : {"'a.yaml' is rejected", "'b.yaml' is rejected"}) {
        EXPECT_EQ(count(log, told), 1U) << told << " in\n" << log;
    }
    EXPECT_THAT(log, Not(HasSubstr("bad secret")));
}

// As send does for its user, in the other directory.
TEST_F(GroupCommands, GoWithTheirReportsWhenTheyAreFetchedOrOld) {
    auto const ago = [&](std::string const& name, int days) {
        utimbuf const times = {0, ::time(nullptr) - days * 86'400 - 60};
        ASSERT_EQ(::utime(pathOf(name).c_str(), &times), 0);
    };
    for (auto const* const name :
         {"cmd/old.result", "cmd/old.report", "cmd/answers/old.2.report", "cmd/answers/old.result",
          "cmd/answers/new.result", "rep/old.result"}) {
        directoryM.write(name, "");
        ago(name, std::string(name).find("new") == std::string::npos ? 7 : 6);
    }
    HostProcess const host(directoryM.path(), {"run", "r.yaml"});
    ASSERT_TRUE(waitForText("err", "MSG_STARTED"));
    EXPECT_THAT(answer("a", "Write: \"@-\""), HasSubstr("Faultless: true"));
    EXPECT_THAT(names("cmd/answers"), ElementsAre("a.report", "a.result", "new.result"));
    EXPECT_THAT(names("cmd"), ElementsAre("answers", "drop"));
    EXPECT_THAT(names("rep"), testing::Contains("old.result"));
    EXPECT_EQ(count(directoryM.read("err"),
                    "Removed 2 results and reports that nobody had fetched for 7 days"),
              2U);
    drop("cmd/drop/a.fetched", "");
    ASSERT_TRUE(eventually([&] { return names("cmd/answers").size() == 1; }));
    EXPECT_TRUE(eventually([&] { return names("cmd/drop").empty(); }));

    // The first report isn't written.
    EXPECT_THAT(answer("b", "Count: \"@-\", Write: \"@-\""), HasSubstr("Faultless: false"));
    EXPECT_THAT(names("cmd/answers"), ElementsAre("b.2.report", "b.result", "new.result"));
    drop("cmd/drop/b.fetched", "");
    EXPECT_TRUE(eventually([&] { return names("cmd/answers").size() == 1; }));
}

TEST_F(GroupCommands, DontKeepOthersWaitingHoweverManyThereAre) {
    writeGroupRegistry("rep", gate());
    for (int number = 10; number < 50; ++number) {
        auto const* const keys = number == 10 || number == 40 ? "{Wait: ''}\n" : "{Count: ''}\n";
        drop("cmd/drop/" + std::to_string(number) + ".yaml", std::string(object) + ": " + keys);
    }
    HostProcess const host(directoryM.path(), {"run", "r.yaml"});
    ASSERT_TRUE(waitForText("trace", "at gate"));
    drop("cmd/own.yaml", std::string(object) + ": {Count: ''}\n");
    openGate(1);
    ASSERT_TRUE(waitForText("trace", "at gate", 2));
    EXPECT_TRUE(std::filesystem::exists(pathOf("cmd/own.result")));
    EXPECT_EQ(names("cmd/drop").size(), 9U);
    openGate(1);
    EXPECT_TRUE(waitForFile("cmd/answers/49.result"));
    EXPECT_THAT(names("cmd/drop"), IsEmpty());
}

TEST_F(GroupCommands, AreAnsweredAfterARestart) {
    writeGroupRegistry("rep", gate());
    {
        HostProcess host(directoryM.path(), {"run", "r.yaml"});
        drop("cmd/drop/a.yaml", std::string(object) + ": {Wait: '', Write: x}\n");
        ASSERT_TRUE(waitForText("trace", "at gate"));
        EXPECT_THAT(names("cmd/answers"), ElementsAre("a.taken"));
        EXPECT_THAT(names("cmd/drop"), IsEmpty());
        host.signal(SIGKILL);
        host.wait();
    }
    // Copied, but not begun.
    drop("cmd/drop/b.yaml", std::string(object) + ": {Number: 7}\n");
    directoryM.write("cmd/answers/b.taken", "");
    HostProcess const host(directoryM.path(), {"run", "r.yaml"});
    ASSERT_TRUE(waitForAnswer("cmd/answers/b"));
    EXPECT_THAT(directoryM.read("cmd/answers/a.result"), HasSubstr("its outcome is unknown"));
    EXPECT_THAT(directoryM.read("cmd/answers/b.result"), HasSubstr("Faultless: true"));
    EXPECT_THAT(names("cmd/answers"), ElementsAre("a.result", "b.result"));
}

TEST_F(GroupCommands, AreTakenFromSafeDirectoriesOnly) {
    struct {
        char const* name;
        mode_t mode;
        mode_t good;
    } const cases[] = {
        {"cmd", 02750, 02710},         {"cmd", 02730, 02710},        {"cmd", 0710, 02710},
        {"cmd/drop", 03750, 03770},    {"cmd/drop", 01770, 03770},   {"cmd/drop", 03772, 03770},
        {"cmd/answers", 02770, 02750}, {"cmd/answers", 0750, 02750}, {"rep", 02770, 02750},
        {"rep", 02710, 02750},         {"rep", 02752, 02750},
    };
    for (auto const& each : cases) {
        setMode(each.name, each.mode);
        EXPECT_EQ(HostProcess(directoryM.path(), {"check", "r.yaml"}).wait(), 3) << each.name;
        EXPECT_THAT(directoryM.read("err"),
                    AllOf(HasSubstr(std::string("/") + each.name + "' can't be used for commands"),
                          HasSubstr("and has the mode ")))
            << each.name;
        setMode(each.name, each.good);
    }
    EXPECT_EQ(HostProcess(directoryM.path(), {"check", "r.yaml"}).wait(), 0);
    writeGroupRegistry("missing");
    EXPECT_EQ(HostProcess(directoryM.path(), {"check", "r.yaml"}).wait(), 3);
    EXPECT_THAT(directoryM.read("err"), HasSubstr("/missing' can't be used: No such file"));
    writeRegistry("{Directory: in}", "", ", Group: no-such-group, Reports: rep");
    EXPECT_EQ(HostProcess(directoryM.path(), {"run", "r.yaml"}).wait(), 3);
    EXPECT_THAT(directoryM.read("err"),
                HasSubstr("'no-such-group' can't be used for commands: there is no"));
    writeRegistry("{Directory: in}", "", ", Group: x");
    EXPECT_EQ(HostProcess(directoryM.path(), {"check", "r.yaml"}).wait(), 3);
    EXPECT_THAT(directoryM.read("err"),
                HasSubstr("r.yaml:2:30: 'Commands' has 'Group' without 'Reports', expected both"));
}

} // namespace
