// Reports that the host collects are whole, or the result says that they aren't.
#include "ServiceFixture.h"

#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/sysmacros.h>
#include <sys/un.h>

#include <cstdlib>
#include <cstring>

namespace {

using testing::HasSubstr;

class ReportCollection : public ServiceFixture {
protected:
    ReportCollection() {
        directoryM.write("x.jsonl", edrs(1));
        std::filesystem::create_directory(pathOf("directory"));
        std::filesystem::create_symlink(pathOf("old"), pathOf("link"));
        std::filesystem::create_symlink("no-directory/x", pathOf("broken"));
        std::filesystem::create_symlink("loop", pathOf("loop"));
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, pathOf("socket").c_str(), sizeof address.sun_path - 1);
        if (::mkfifo(pathOf("fifo").c_str(), 0600) != 0 ||
            ::bind(socketM, reinterpret_cast<sockaddr const*>(&address), sizeof address) != 0) {
            throw std::runtime_error("no FIFO or no socket");
        }
    }
    ~ReportCollection() override { ::close(socketM); }

    // Runs the commands at the end beside a small file system, "small", with a file "old", which is
    // copied to "kept" afterwards; the exit code, or 77 when there can't be one.
    int runBesideASmallFileSystem(std::vector<std::string> const& commands) const {
        writeRegistry("{Files: [x.jsonl]}");
        std::string script =
            "mount -t tmpfs -o size=1m none small || exit 77; printf old >small/old; "
            "mkdir small/none && mount -t tmpfs -o nr_inodes=1 none small/none || exit 77; "
            "PIPELINE_HOST_MODULE_PATH='" HOST_TEST_MODULES "' '" HOST_PROGRAM
            "' run r.yaml --quiet";
        for (auto const& each : commands) {
            script += " --at-end '" + each + "'";
        }
        directoryM.write("script",
                         script + " >out 2>err; code=$?; cp small/old kept; exit $code\n");
        auto const outer =
            "cd '" + directoryM.path().string() +
            "' && mkdir small && { unshare --mount true 2>/dev/null || exit 77; } && "
            "unshare --mount sh script 2>/dev/null";
        int const status = std::system(outer.c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    static std::string command(std::string const& keys) { return std::string(object) + " " + keys; }

    // Hands the command over at the end of a run whose files can't be larger; the exit code.
    int runWith(std::string const& keys, rlim_t mostBytes = RLIM_INFINITY) const {
        writeRegistry("{Files: [x.jsonl]}");
        rlimit before = {};
        ::getrlimit(RLIMIT_FSIZE, &before);
        rlimit const limit = {mostBytes, before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        HostProcess host(directoryM.path(),
                         {"run", "r.yaml", "--quiet", "--at-end", command(keys)});
        ::setrlimit(RLIMIT_FSIZE, &before);
        return host.wait();
    }

    // Nothing of the host's is left in the directory.
    bool hasTemporaries() const {
        std::filesystem::directory_iterator const all(directoryM.path());
        return std::any_of(begin(all), end(all), [](auto const& entry) {
            return isTemporary(entry.path().filename().string());
        });
    }

private:
    int socketM = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
};

TEST_F(ReportCollection, KeepsTheOldFileUntilTheNewOneIsWhole) {
    constexpr rlim_t unlimited = RLIM_INFINITY;
    std::string const eight = "written\n";
    struct {
        std::string keys;
        rlim_t mostBytes;
        int exitCode;
        std::string content; // of "old" afterwards
        std::string told;
    } const cases[] = {
        {"Write=@old", unlimited, 0, eight, "8 bytes, complete"},
        {"Write=@old Lines=0", unlimited, 0, "", "0 bytes, complete"},
        {"Write=@old Lines=3", unlimited, 0, eight + eight + eight, "24 bytes, complete"},
        {"Write=@old Lines=1000", 4096, 1, "old", "8000 bytes, not complete: "},
        {"Write=old Lines=1000", 4096, 1, "", "4096 bytes, not complete: it has reached"},
        {"Write=@old Throw", unlimited, 1, "old", "not handled, the object threw"},
        {"Write=@old Refuse", unlimited, 1, "old", "not complete: the object rejected"},
        {"Write=@old Hold", unlimited, 1, "old", "still open 3 seconds after"},
        {"Count=@old", unlimited, 1, "old", "nothing opened it for writing"},
        {"Wirte=@old", unlimited, 1, "old", "the object didn't ask for the key"},
        {"Count Wirte=old", unlimited, 1, "old", "ignored Wirte (did you mean 'Write'?)"},
        {"Write=@link", unlimited, 1, "old", "link': it is a link, expected a regular file"},
        {"Write=@directory", unlimited, 1, "old", "it is a directory"},
        {"Write=@missing/x", unlimited, 1, "old", "' doesn't exist"},
        {"Write=@", unlimited, 1, "old", "expected a path after '@'"},
        {"Write=@@old", unlimited, 0, "old", "/@old', 8 bytes"},
        {"Write=missing/x", unlimited, 1, "old", "didn't write '"},
        {"Count=/missing/x", unlimited, 1, "old", "didn't write '"},
        {"Write=./broken", unlimited, 1, "old", "/no-directory' doesn't exist"},
        {"Write=./loop", unlimited, 1, "old", "Too many levels of symbolic links"},
        {"Write=./" + std::string(300, 'n'), unlimited, 1, "old", "File name too long"},
        {"Write=old/x", unlimited, 1, "old", "/old' doesn't exist"},
        {"Write=fifo", unlimited, 1, "old", "it is a FIFO, expected a regular file"},
        {"Write=directory", unlimited, 1, "old", "it is a directory, expected a regular file"},
        {"Write=socket", unlimited, 1, "old", "it is a socket, expected a regular file"},
        {"Write=@\"ol\x07"
         "d\"",
         unlimited, 1, "old", "has a control character"},
        {"Write=/dev/null", unlimited, 0, "old", "wrote '/dev/null', 0 bytes"},
    };
    for (auto const& each : cases) {
        SCOPED_TRACE(each.keys);
        directoryM.write("old", "old");
        EXPECT_EQ(runWith(each.keys, each.mostBytes), each.exitCode);
        EXPECT_THAT(directoryM.read("out"), HasSubstr(each.told));
        if (each.content.empty() && each.exitCode != 0) {
            EXPECT_EQ(std::filesystem::file_size(pathOf("old")), 4096U); // the object's own doing
        } else {
            EXPECT_EQ(directoryM.read("old"), each.content);
        }
        EXPECT_FALSE(hasTemporaries());
    }
}

TEST_F(ReportCollection, FindsFilesBeyondLinks) {
    std::filesystem::create_directories(pathOf("other/sub"));
    std::filesystem::create_symlink("other/sub", pathOf("link-to-sub"));
    for (std::string const value : {"@link-to-sub/../collected", "link-to-sub/../plain"}) {
        EXPECT_EQ(runWith("Write=" + value), 0);
        auto const path = value.substr(value.find('l'));
        EXPECT_THAT(directoryM.read("out"), HasSubstr("/" + path + "', 8 bytes"));
        EXPECT_EQ(std::filesystem::file_size(pathOf(path)), 8U);
    }
    EXPECT_EQ(names("other"), (std::vector<std::string>{"collected", "plain", "sub"}));
}

TEST_F(ReportCollection, RefusesBlockDevices) {
    constexpr auto major = 7;
    if (::mknod(pathOf("block").c_str(), S_IFBLK | 0600, ::makedev(major, 0)) != 0) {
        GTEST_SKIP() << "making a block device is not permitted here";
    }
    for (auto const* const value : {"Write=block", "Write=@block"}) {
        EXPECT_EQ(runWith(value), 1);
        EXPECT_THAT(directoryM.read("out"), HasSubstr("it is a block device, expected a regular"));
    }
}

TEST_F(ReportCollection, TellsWhenTheFileSystemIsFull) {
    int const code = runBesideASmallFileSystem(
        {command("Write=@small/old Lines=1000000"), command("Write=@small/fits"),
         command("Write=small/plain Lines=1000000"), command("Write=small/none/plain")});
    if (code == 77) {
        GTEST_SKIP() << "mounting a file system is not permitted here";
    }
    EXPECT_EQ(code, 1);
    auto const told = directoryM.read("out");
    EXPECT_THAT(told, HasSubstr("/small/old', 8000000 bytes, not complete: "));
    EXPECT_THAT(told, HasSubstr("No space left on device"));
    EXPECT_THAT(told, HasSubstr("/small/fits', 8 bytes, complete"));
    EXPECT_THAT(told, HasSubstr("not complete: the file system is full, so that it may be cut"));
    EXPECT_THAT(told, HasSubstr("/small/none/plain': the file system has no room for another"));
    EXPECT_EQ(directoryM.read("kept"), "old");
}

TEST_F(ReportCollection, CollectsWhatIsLargerThanItsMemoryPrivately) {
    EXPECT_EQ(runWith("Write=@large Lines=12000000"), 0);
    EXPECT_EQ(std::filesystem::file_size(pathOf("large")), 96'000'000U);
    struct stat found = {};
    ASSERT_EQ(::stat(pathOf("large").c_str(), &found), 0);
    EXPECT_EQ(found.st_mode & 07777U, 0640U);
}

TEST_F(ReportCollection, HandsReportsToTheSender) {
    writeRegistry("{Files: [x.jsonl]}");
    EXPECT_EQ(HostProcess(directoryM.path(), {"run", "r.yaml", "--at-end", command("Write=@-"),
                                              "--at-end", command("Write=@- Lines=2")})
                  .wait(),
              0);
    EXPECT_EQ(directoryM.read("out"), "written\nwritten\nwritten\n");
    EXPECT_THAT(directoryM.read("err"), HasSubstr("Write=@-: handled, no work done"));
    auto const piped = "cd '" + directoryM.path().string() +
                       "' && PIPELINE_HOST_MODULE_PATH='" HOST_TEST_MODULES "' '" HOST_PROGRAM
                       "' run r.yaml --quiet --at-end '" +
                       command("Write=/dev/stdout") + "' 2>/dev/null | cat >piped";
    EXPECT_EQ(std::system(piped.c_str()), 0);
    EXPECT_THAT(directoryM.read("piped"), testing::StartsWith("written\n"));
    // The object writes to a file by an offset of its own.
    EXPECT_EQ(std::system(("cd '" + directoryM.path().string() +
                           "' && PIPELINE_HOST_MODULE_PATH='" HOST_TEST_MODULES "' '" HOST_PROGRAM
                           "' run r.yaml --at-end '" +
                           command("Write=/dev/stdout Lines=2") + "' 2>/dev/null >own")
                              .c_str()),
              0);
    EXPECT_THAT(directoryM.read("own"),
                testing::AllOf(testing::StartsWith("written\nwritten\n" + std::string(object)),
                               testing::EndsWith("\n"), HasSubstr("\nPipeline")));
    EXPECT_EQ(
        HostProcess(directoryM.path(), {"run", "r.yaml", "--json", "--at-end", command("Write=@-")})
            .wait(),
        2);

    writeRegistry("{Directory: in}");
    HostProcess host(directoryM.path(), {"run", "r.yaml"});
    ASSERT_TRUE(waitForText("err", "MSG_STARTED"));
    auto const send = [&](std::vector<std::string> const& words) {
        std::vector<std::string> arguments = {"send", "r.yaml", object};
        arguments.insert(arguments.end(), words.begin(), words.end());
        return HostProcess(directoryM.path(), arguments).wait();
    };
    EXPECT_EQ(send({"Write=@-", "Lines=2"}), 0);
    EXPECT_EQ(directoryM.read("out"), "written\nwritten\n");
    EXPECT_THAT(directoryM.read("err"), HasSubstr("\"Complete\": true}"));
    EXPECT_EQ(send({"Count=@-", "Write=@-"}), 1); // the first isn't written
    EXPECT_EQ(directoryM.read("out"), "written\n");
    EXPECT_EQ(send({"Count=@-"}), 1);
    EXPECT_EQ(directoryM.read("out"), "");
    EXPECT_EQ(send({"Write=@-", "--json"}), 2);
    EXPECT_EQ(send({"Write=@new", "Wirte=x", "--json"}), 1);
    EXPECT_THAT(directoryM.read("out"),
                testing::MatchesRegex("\\{\"Command\": \"[^\"]+\", \"Handled\": true, "
                                      "\"Faultless\": false, \"Results\": \\[\\{\"Object\": "
                                      "\"[^\"]+\", \"Keys\": .*\"Complete\": true\\}\\], .*\\}\n"));
    EXPECT_TRUE(eventually([&] { return names("cmd").empty(); }));
    auto const lost = "cd '" + directoryM.path().string() + "' && '" HOST_PROGRAM "' send r.yaml " +
                      object + " Write=@- >/dev/full 2>lost";
    EXPECT_EQ(WEXITSTATUS(std::system(lost.c_str())), 4);
    EXPECT_THAT(directoryM.read("lost"), HasSubstr("No space left on device; the report stays in"));
    EXPECT_TRUE(eventually([&] { return names("cmd").size() == 2; })); // and the result
    drop("cmd/by-hand.yaml", std::string(object) + ": {Write: \"@-\"}\n");
    ASSERT_TRUE(waitForFile("cmd/by-hand.result"));
    EXPECT_EQ(directoryM.read("cmd/by-hand.report"), "written\n");
}

// Nothing but the reports needs the directory.
TEST_F(ReportCollection, RefusesReportsWithoutADirectoryForItsFifos) {
    auto const missing = "/missing' can't be used: No such file";
    writeRegistry("{Directory: in}");
    ::setenv("TMPDIR", pathOf("missing").c_str(), 1);
    HostProcess host(directoryM.path(), {"run", "r.yaml"});
    drop("cmd/a.yaml", std::string(object) + ": {Write: \"@old\"}\n");
    EXPECT_TRUE(waitForFile("cmd/a.result"));
    EXPECT_THAT(directoryM.read("cmd/a.result"), HasSubstr(missing));
    drop("cmd/b.yaml", std::string(object) + ": {Write: old}\n");
    EXPECT_TRUE(waitForFile("cmd/b.result"));
    host.signal(SIGTERM);
    EXPECT_EQ(host.wait(), 0);
    EXPECT_EQ(runWith("Write=@-"), 1);
    ::unsetenv("TMPDIR");
    EXPECT_THAT(directoryM.read("err"), HasSubstr(missing));
    EXPECT_THAT(directoryM.read("err"), HasSubstr("MSG_PIPELINE_SUMMARY"));
}

// The plug-in waits for the gate, which never opens.
TEST_F(ReportCollection, EndsInTheMiddleOfACommandThatDoesnt) {
    directoryM.write("old", "old");
    writeRegistry("{Directory: in}", gate(), ", StopTimeout: 1");
    HostProcess host(directoryM.path(), {"run", "r.yaml"});
    ASSERT_TRUE(waitForText("err", "MSG_STARTED"));
    drop("cmd/a.yaml", std::string(object) + ": {Write: \"@old\", Wait: \"\"}\n");
    ASSERT_TRUE(waitForText("err", "MSG_COMMAND_STARTED"));
    ASSERT_TRUE(waitForText("trace", "at gate"));
    host.signal(SIGTERM);
    EXPECT_EQ(host.wait(), 4);
    EXPECT_THAT(directoryM.read("err"), HasSubstr("ERR_COMMAND_GIVEN_UP 'Write=@old Wait' was"));
    EXPECT_EQ(directoryM.read("old"), "old");
    EXPECT_FALSE(hasTemporaries());

    HostProcess next(directoryM.path(), {"run", "r.yaml"});
    ASSERT_TRUE(waitForFile("cmd/a.result"));
    EXPECT_THAT(directoryM.read("cmd/a.result"), HasSubstr("its outcome is unknown"));
}

TEST_F(ReportCollection, LeavesNothingBesideTheOldFileWhenItIsKilled) {
    int const nameless = ::open(directoryM.path().c_str(), O_WRONLY | O_TMPFILE | O_CLOEXEC, 0600);
    if (nameless < 0) {
        GTEST_SKIP() << "the file system has no files without a name";
    }
    ::close(nameless);
    directoryM.write("old", "old");
    writeRegistry("{Directory: in}", gate());
    HostProcess host(directoryM.path(), {"run", "r.yaml"});
    drop("cmd/a.yaml", std::string(object) + ": {Write: \"@old\", Wait: \"\"}\n");
    ASSERT_TRUE(waitForText("trace", "at gate"));
    host.signal(SIGKILL);
    EXPECT_EQ(host.wait(), -SIGKILL);
    EXPECT_EQ(directoryM.read("old"), "old");
    EXPECT_FALSE(hasTemporaries());
}

// The signal comes while a command of the end is at work: it has its time, and the others follow.
TEST_F(ReportCollection, GivesCommandsAtTheEndTheirTimeAfterASignal) {
    auto const run = [&](char const* stopTimeout) {
        directoryM.write("old", "old");
        directoryM.write("trace", "");
        writeRegistry("{Files: [x.jsonl]}", gate(), std::string(", StopTimeout: ") + stopTimeout);
        auto host = std::make_unique<HostProcess>(
            directoryM.path(),
            std::vector<std::string>{"run", "r.yaml", "--quiet", "--at-end",
                                     command("Write=@old Wait"), "--at-end", command("Count")});
        openGate(1); // for the batch
        EXPECT_TRUE(waitForText("trace", "at gate", 2));
        host->signal(SIGTERM);
        return host;
    };
    auto const waiting = run("60");
    openGate(1);
    EXPECT_EQ(waiting->wait(), 0);
    EXPECT_EQ(directoryM.read("old"), "written\n");
    EXPECT_THAT(directoryM.read("out"), HasSubstr("Count: handled, work done"));

    EXPECT_EQ(run("1")->wait(), 4);
    EXPECT_THAT(directoryM.read("err"), HasSubstr("ERR_COMMAND_GIVEN_UP 'Write=@old Wait' was"));
    EXPECT_EQ(directoryM.read("old"), "old");
    EXPECT_FALSE(hasTemporaries());
}

} // namespace
