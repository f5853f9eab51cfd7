// Who may read what a host keeps, and what others put into its directories to harm it.
#include "ServiceFixture.h"

#include "BAS/Status.h"
#include "input/RejectFile.h"

namespace {

using testing::HasSubstr;
using testing::Not;

class HostileEntries : public ServiceFixture {
protected:
    HostileEntries() : maskM(::umask(0)) { directoryM.write("secret", "bad secret\n"); }
    ~HostileEntries() override { ::umask(maskM); }

    unsigned modeOf(std::string const& name) const {
        struct stat found = {};
        return ::lstat(pathOf(name).c_str(), &found) == 0 ? found.st_mode & 07777U : 0U;
    }
    void link(std::string const& name, std::string const& target) const {
        std::filesystem::create_symlink(pathOf(target), pathOf(name));
    }

private:
    mode_t maskM;
};

TEST_F(HostileEntries, FindNothingThatOthersMayRead) {
    auto const text = directoryM.read("r.yaml");
    directoryM.write("r.yaml", "host:\n  Log: {Process: process.log}\n" + text.substr(6));
    for (auto const mode : {0600U, 0640U, 0604U, 0666U}) {
        auto const name = "in/" + std::to_string(mode);
        directoryM.write("dropped", "bad\n");
        std::filesystem::permissions(pathOf("dropped"), std::filesystem::perms(mode));
        std::filesystem::rename(pathOf("dropped"), pathOf(name));
    }
    drop("cmd/a.yaml", std::string(object) + ": {Write: \"@-\"}\n");
    HostProcess host(directoryM.path(), {"run", "r.yaml"});
    ASSERT_TRUE(waitForFile("cmd/a.result"));
    ASSERT_TRUE(waitForFile("in/done/" + std::to_string(0666)));
    struct {
        std::string name;
        unsigned mode;
    } const cases[] = {
        {"process.log", 0640},
        {"cmd/a.result", 0640},
        {"cmd/a.report", 0640},
        {"in/done/.state", 0640},
        {"in/done", 0750},
        {"in/done/" + std::to_string(0600) + ".reject", 0600},
        {"in/done/" + std::to_string(0640) + ".reject", 0640},
        {"in/done/" + std::to_string(0604) + ".reject", 0640},
        {"in/done/" + std::to_string(0666) + ".reject", 0640},
    };
    for (auto const& each : cases) {
        EXPECT_EQ(modeOf(each.name), each.mode) << each.name;
    }
}

TEST_F(HostileEntries, ArePassedByAndReportedOnce) {
    link("in/a.jsonl", "secret");
    link("cmd/a.yaml", "secret");
    link("cmd/.c.result.tmp", "secret");
    for (auto const* const fifo : {"in/b.jsonl", "cmd/b.yaml"}) {
        ASSERT_EQ(::mkfifo(pathOf(fifo).c_str(), 0600), 0);
    }
    auto const command = std::string(object) + ": {Count: }\n";
    for (auto const* const obstacle : {"cmd/c.taken", "cmd/d.result"}) {
        std::filesystem::create_directories(pathOf(obstacle) / "x");
    }
    drop("cmd/c.yaml", command);
    drop("cmd/d.yaml", command);
    drop("cmd/e.yaml", std::string((1U << 20U) + 1, '#'));
    drop("cmd/f.yaml", command);
    drop("in/c.jsonl", edrs(1));
    HostProcess host(directoryM.path(), {"run", "r.yaml"});
    ASSERT_TRUE(waitForFile("cmd/f.result"));
    ASSERT_TRUE(waitForFile("in/done/c.jsonl"));
    drop("cmd/g.yaml", command);
    drop("in/d.jsonl", edrs(1));
    ASSERT_TRUE(waitForFile("cmd/g.result"));
    ASSERT_TRUE(waitForFile("in/done/d.jsonl"));
    EXPECT_THAT(directoryM.read("cmd/e.result"), HasSubstr("it is larger than 1048576 bytes"));
    std::filesystem::remove_all(pathOf("cmd/c.taken"));
    drop("cmd/h.yaml", command);
    ASSERT_TRUE(waitForFile("cmd/c.result")); // nothing is in its way any more
    host.signal(SIGTERM);
    EXPECT_EQ(host.wait(), 0);
    auto const log = directoryM.read("err");
    for (auto const* const told :
         {"/in/a.jsonl' can't be read", "/in/b.jsonl' can't be read", "'a.yaml' is rejected",
          "'b.yaml' is rejected", "'c.taken' is in the way: it is a directory",
          "'d.result' is in the way: it is a directory"}) {
        EXPECT_EQ(count(log, told), 1U) << told << " in\n" << log;
    }
    EXPECT_THAT(log, HasSubstr("failed inputs: 0"));
    EXPECT_THAT(log, Not(HasSubstr("bad secret")));
    EXPECT_EQ(directoryM.read("secret"), "bad secret\n");
    EXPECT_THAT(names("in"), testing::ElementsAre("a.jsonl", "b.jsonl", "done"));
}

TEST_F(HostileEntries, DontLeadTheHostToOtherFiles) {
    struct {
        char const* name;
        char const* target;
    } const cases[] = {{"in/done/.state", "secret"}, {"in/done", "elsewhere"}};
    std::filesystem::create_directory(pathOf("elsewhere"));
    std::filesystem::create_directory(pathOf("shared"));
    for (auto const& each : cases) {
        std::filesystem::remove_all(pathOf("in/done"));
        std::filesystem::create_directories(pathOf(each.name).parent_path());
        link(each.name, each.target);
        EXPECT_EQ(HostProcess(directoryM.path(), {"run", "r.yaml"}).wait(), 3) << each.name;
        EXPECT_THAT(directoryM.read("err"), Not(HasSubstr("MSG_STARTED")));
    }
    EXPECT_EQ(directoryM.read("secret"), "bad secret\n");
    EXPECT_TRUE(std::filesystem::is_empty(pathOf("elsewhere")));
    link("shared/.s.tmp", "secret");
    auto const text = directoryM.read("r.yaml");
    for (auto const* const status : {"shared/s", "gate"}) {
        directoryM.write("r.yaml",
                         std::string("host:\n  Status: {File: ") + status + "}\n" + text.substr(6));
        std::filesystem::remove_all(pathOf("in/done"));
        HostProcess host(directoryM.path(), {"run", "r.yaml"});
        if (status == std::string("gate")) {
            EXPECT_EQ(host.wait(), 3);
            continue;
        }
        EXPECT_TRUE(waitForFile(status));
        EXPECT_EQ(directoryM.read("secret"), "bad secret\n");
    }
    EXPECT_EQ(HostProcess(directoryM.path(), {"check", "gate"}).wait(), 3);
    EXPECT_THAT(directoryM.read("err"), HasSubstr("it is a FIFO, expected a regular file"));
}

TEST_F(HostileEntries, ArentCutAsAnEarlierRejectFile) {
    std::filesystem::create_hard_link(pathOf("secret"), pathOf("x.reject"));
    host::InputConfiguration const input = {pathOf("x"), pathOf("x.reject")};
    EXPECT_THROW(host::RejectFile(input, 3), BAS::Status);
    EXPECT_EQ(directoryM.read("secret"), "bad secret\n");
}

} // namespace
