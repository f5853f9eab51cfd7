// The host under a service manager: what it tells, when it counts as stuck, and what signals do.
#include "ServiceFixture.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cstring>

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

// Sets variables of the environment as long as it lives.
class Environment {
public:
    void set(std::string const& name, std::string const& value) {
        ::setenv(name.c_str(), value.c_str(), 1);
        namesM.push_back(name);
    }
    ~Environment() {
        for (auto const& name : namesM) {
            ::unsetenv(name.c_str());
        }
    }

private:
    std::vector<std::string> namesM;
};

class ServiceManager : public ServiceFixture {
protected:
    ServiceManager() {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::strcpy(address.sun_path, pathOf("notify").c_str());
        socketM = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        timeval const limit = {120, 0};
        ::setsockopt(socketM, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
        if (::bind(socketM, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
            throw std::runtime_error("no socket");
        }
        environmentM.set("NOTIFY_SOCKET", pathOf("notify"));
        environmentM.set("WATCHDOG_USEC", "200000");
    }
    ~ServiceManager() override { ::close(socketM); }

    // The next message; empty when none comes.
    std::string next() const {
        char buffer[1000];
        auto const size = ::recv(socketM, buffer, sizeof buffer, 0);
        return size < 0 ? std::string() : std::string(buffer, static_cast<std::size_t>(size));
    }
    // Passes messages by until one has the text.
    std::string nextWith(std::string const& text) const {
        auto message = next();
        while (!message.empty() && message.find(text) == std::string::npos) {
            message = next();
        }
        return message;
    }

    Environment environmentM;

private:
    int socketM = -1;
};

} // namespace

TEST_F(ServiceManager, isToldHowTheHostIsDoing) {
    writeRegistry("{Directory: in}", gate());
    HostProcess host(directoryM.path(), {"run", "r.yaml"});
    EXPECT_THAT(next(), HasSubstr("EXTEND_TIMEOUT_USEC="));
    EXPECT_THAT(nextWith("READY=1"), StartsWith("READY=1\n"));
    drop("cmd/a.yaml", std::string(object) + ": {Wait: ''}\n");
    ASSERT_TRUE(waitForText("trace", "at gate"));
    for (int i = 0; i < 10; ++i) {
        EXPECT_THAT(next(), StartsWith("READY=1\nWATCHDOG=1\nSTATUS=0 EDRs/s"))
            << "waits for a command";
    }
    openGate(2);
    drop("in/edrs.jsonl", edrs(2));
    EXPECT_THAT(nextWith("2 EDRs read"), HasSubstr("WATCHDOG=1\n"));
    host.signal(SIGTERM);
    EXPECT_THAT(nextWith("STOPPING=1"), StartsWith("STOPPING=1\n"));
    EXPECT_EQ(host.wait(), 0);
}

TEST_F(ServiceManager, hearsNothingOfAHostThatIsStuckInABatch) {
    writeRegistry("{Directory: in}", gate());
    auto const text = directoryM.read("r.yaml");
    directoryM.write("r.yaml", "host:\n  Watchdog: {BatchSeconds: 1}\n" + text.substr(6));
    HostProcess const host(directoryM.path(), {"run", "r.yaml"});
    drop("in/edrs.jsonl", edrs(2));
    auto const stuck = nextWith("stuck in a batch");
    EXPECT_THAT(stuck, AllOf(StartsWith("STATUS="), Not(HasSubstr("WATCHDOG"))));
    ASSERT_TRUE(waitForText("err", "ERR_BATCH_STUCK"));
    EXPECT_THAT(directoryM.read("err"), HasSubstr(std::string("critical P ") + object));
    openGate(1);
    EXPECT_THAT(nextWith("2 EDRs read"), HasSubstr("WATCHDOG=1"));
    EXPECT_EQ(count(directoryM.read("err"), "ERR_BATCH_STUCK"), 1U);
}

TEST_F(ServiceManager, getsPrioritiesAndNoTimesInItsJournal) {
    directoryM.write("err", "");
    struct stat found = {};
    ASSERT_EQ(::stat(pathOf("err").c_str(), &found), 0);
    environmentM.set("JOURNAL_STREAM",
                     std::to_string(found.st_dev) + ":" + std::to_string(found.st_ino));
    HostProcess host(directoryM.path(), {"run", "r.yaml"});
    ASSERT_TRUE(waitForText("err", "MSG_STARTED"));
    host.signal(SIGTERM);
    EXPECT_EQ(host.wait(), 0);
    EXPECT_THAT(directoryM.read("err"), AllOf(StartsWith("<6>- - MSG_STARTED Started;"),
                                              HasSubstr("\n<5>- - MSG_STOPPING ")));
}

TEST_F(ServiceManager, canHaveLogsRotatedAndSendOtherSignals) {
    auto text = directoryM.read("r.yaml");
    text.replace(text.find("      Input:"), 0, "      Log: p.log\n");
    directoryM.write("r.yaml", "host:\n  Log: {Process: host.log}\n" + text.substr(6));
    HostProcess host(directoryM.path(), {"run", "r.yaml"});
    ASSERT_TRUE(waitForText("host.log", "MSG_STARTED"));
    for (int const signal : {SIGUSR1, SIGUSR2, SIGALRM, SIGPIPE, SIGRTMIN, SIGRTMAX}) {
        host.signal(signal);
    }
    for (auto const* const log : {"host.log", "p.log"}) {
        std::filesystem::rename(pathOf(log), pathOf(std::string(log) + ".1"));
    }
    host.signal(SIGHUP);
    ASSERT_TRUE(waitForFile("host.log") && waitForFile("p.log"));
    drop("in/edrs.jsonl", edrs(1));
    ASSERT_TRUE(waitForText("p.log", "MSG_INPUT_DONE"));
    host.signal(SIGTERM);
    EXPECT_EQ(host.wait(), 0);
    EXPECT_THAT(directoryM.read("host.log"), HasSubstr("MSG_STOPPING"));
    EXPECT_EQ(count(directoryM.read("host.log.1"), "\n"), 1U);
}
