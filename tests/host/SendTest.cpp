#include "ServiceFixture.h"

namespace {

using testing::HasSubstr;

class Send : public ServiceFixture {
protected:
    // The exit code; the output is in "out" and "err".
    int send(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {"send", "r.yaml"});
        return HostProcess(directoryM.path(), arguments).wait();
    }
};

TEST_F(Send, PrintsTheResultAndLeavesNothing) {
    struct {
        std::vector<std::string> arguments;
        int exitCode;
        std::string output;
    } const cases[] = {
        {{object, "Count", "Number=a=b c"}, 0, "Keys: {\"Count\": \"\", \"Number\": \"a=b c\"}"},
        {{object, "Refuse=1"}, 1, "Verdict: \"rejected\""},
        {{"host.Nobody", "Count"}, 1, "Reason: \"unknown object\""},
    };
    // The logs of the host and of send would share a file.
    auto const text = directoryM.read("r.yaml");
    directoryM.write("r.yaml", "host:\n  Log: {Process: process.log}\n" + text.substr(6));
    HostProcess host(directoryM.path(), {"run", "r.yaml"});
    ASSERT_TRUE(waitForText("process.log", "MSG_STARTED"));
    for (auto const& each : cases) {
        EXPECT_EQ(send(each.arguments), each.exitCode) << each.output;
        EXPECT_THAT(directoryM.read("out"), HasSubstr(each.output));
        EXPECT_EQ(directoryM.read("err"), "");
    }
    EXPECT_TRUE(eventually([&] { return names("cmd").empty(); }));
}

TEST_F(Send, WithdrawsWhatNoHostTakes) {
    EXPECT_EQ(send({object, "Count", "--timeout", "0.05"}), 75);
    EXPECT_THAT(directoryM.read("err"), HasSubstr("it is withdrawn"));
    EXPECT_TRUE(names("cmd").empty());

    HostProcess impatient(directoryM.path(), {"send", "r.yaml", object, "Count"});
    ASSERT_TRUE(eventually([&] { return names("cmd").size() == 1; }));
    impatient.signal(SIGINT);
    EXPECT_EQ(impatient.wait(), 130);
    EXPECT_TRUE(names("cmd").empty());
}

TEST_F(Send, TellsWhereTheResultOfALongCommandWillBe) {
    writeRegistry("{Directory: in}", gate());
    HostProcess host(directoryM.path(), {"run", "r.yaml"});
    ASSERT_TRUE(waitForText("err", "MSG_STARTED"));
    HostProcess sender(directoryM.path(), {"send", "r.yaml", object, "Wait"});
    ASSERT_TRUE(waitForText("trace", "at gate"));
    sender.signal(SIGTERM);
    EXPECT_EQ(sender.wait(), 130);
    EXPECT_THAT(directoryM.read("err"), HasSubstr("A host has taken the command"));
    openGate(1);
    ASSERT_TRUE(eventually([&] {
        auto const left = names("cmd");
        return left.size() == 1 && left.front().ends_with(".result");
    }));
    EXPECT_THAT(directoryM.read("cmd/" + names("cmd").front()), HasSubstr("Handled: true\n"));
}

TEST_F(Send, TellsWhatKeepsItFromSending) {
    struct {
        std::vector<std::string> arguments;
        int exitCode;
        char const* message;
    } const cases[] = {
        {{object}, 2, "KEY is required"},
        {{object, "A=\xe4"}, 2, "is not valid UTF-8"},
        {{object, "A=1", "A=2"}, 2, "the key 'A' is given twice"},
        {{object, "A", "--timeuot", "1"}, 2, "did you mean '--timeout'?"},
        {{object, "A", "--timeout", "soon"}, 2, "--timeout"},
        {{object, "A", "--timeout", "nan"}, 2, "--timeout"},
    };
    for (auto const& each : cases) {
        EXPECT_EQ(send(each.arguments), each.exitCode) << each.message;
        EXPECT_THAT(directoryM.read("err"), HasSubstr(each.message));
    }
    std::filesystem::remove(pathOf("cmd"));
    EXPECT_EQ(send({object, "A"}), 4);
    EXPECT_THAT(directoryM.read("err"), HasSubstr("/cmd' can't be used: No such file"));
    directoryM.write("r.yaml", "host: {DataPool: , Pipelines: {P: {EdrDescription: x, Input: "
                               "{Files: [x]}, Functions: }}}\n");
    EXPECT_EQ(send({object, "A"}), 3);
    EXPECT_THAT(directoryM.read("err"), HasSubstr("has no command directory"));
}

} // namespace
