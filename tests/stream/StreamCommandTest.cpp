// What a host makes of commands that an operator gave all hosts of a stream.
#include "base/MessageCatalogue.h"
#include "base/WholeFile.h"
#include "commands/CommandExecution.h"
#include "run/StreamCommandTaker.h"
#include "support/LogRecorder.h"
#include "support/TemporaryDirectory.h"

#include "BAS/ProtectedBool.h"
#include "BAS/RegisteredObject.h"

#include <gmock/gmock.h>

#include <deque>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// Keeps what is answered.
class Commands : public host::StreamCommands {
public:
    struct Kept {
        std::deque<host::StreamCommand> waiting;
        std::vector<host::StreamAnswer> answers;
    };

    explicit Commands(Kept& kept) : keptM(kept) {}

    std::optional<host::StreamCommand> take() override {
        if (keptM.waiting.empty()) {
            return std::nullopt;
        }
        auto command = std::move(keptM.waiting.front());
        keptM.waiting.pop_front();
        return command;
    }
    void answer(std::uint64_t /*number*/, host::StreamAnswer answer) override {
        keptM.answers.push_back(std::move(answer));
    }

private:
    Kept& keptM;
};

class StreamCommand : public testing::Test {
protected:
    StreamCommand() { std::filesystem::current_path(directoryM.path()); }
    ~StreamCommand() override { std::filesystem::current_path("/"); }

    // The answer to it; execute is the object's work.
    host::StreamAnswer send(std::string const& text) {
        keptM.waiting.push_back(
            {1, text, "somebody", std::chrono::steady_clock::time_point::max()});
        takerM.takeSome(stopM);
        auto answer = std::move(keptM.answers.back());
        keptM.answers.clear();
        return answer;
    }

    support::TemporaryDirectory directoryM;
    support::LogRecorder logM;
    host::Notification stopM;
    Commands::Kept keptM;
    std::vector<std::vector<std::uint64_t>> ownedM = {{0, 1, 2}}; // one after the other
    std::size_t askedM = 0;
    host::CommandDirectory::Execute executeM;
    std::size_t executedM = 0;
    host::StreamCommandTaker takerM{
        "Main", std::make_unique<Commands>(keptM),
        [this] { return ownedM[std::min(askedM++, ownedM.size() - 1)]; },
        [this](host::Command const& command, host::CommandDirectory::Done done) {
            ++executedM;
            return executeM(command, std::move(done));
        },
        logM};
};

TEST_F(StreamCommand, TakesNothingThatCouldBeAPathOfTheHost) {
    directoryM.write("7", "secret");
    for (auto const* const text :
         {"O: {Dump: /tmp/x}", "O: {Dump: '@/tmp/x'}", "O: {Dump: '@-'}", "O: {Dump: '@@'}",
          "O: {Dump: events.txt}", "O: {Dump: '~'}", "O: {Dump: a b}", "O: {Dump: 7}",
          "O: {Dump: events}", "O: {Dump: '-'}", "O: {Dump: 1e3}",
          "O: {Dump: '@', DumpEvents: '@'}", "O: {A: 1}\nP: {A: 1}", "O: {A: [1]}", "", "x"}) {
        auto const answer = send(text);
        EXPECT_THAT(answer.partitions, ElementsAre(0, 1, 2)) << text;
        EXPECT_FALSE(answer.isFaultless) << text;
        EXPECT_THAT(answer.result, HasSubstr("not handled")) << text;
    }
    EXPECT_EQ(executedM, 0U);
    EXPECT_EQ(directoryM.read("7"), "secret");
}

TEST_F(StreamCommand, SendsTheReportAndLeavesNoFile) {
    std::filesystem::path place;
    executeM = [&](host::Command const& command, auto const&) {
        EXPECT_EQ(command.update.find("Dump")->value(), "@-");
        EXPECT_EQ(command.update.find("Level")->value(), "5");
        EXPECT_TRUE(command.latest);
        place = command.reportForSender();
        host::writeWholeFile(place, "the report");
        auto result = host::begunResult(command);
        result.isHandled = true;
        return std::optional(result);
    };
    auto const answer = send("O: {Dump: '@', Level: 5}");
    EXPECT_TRUE(answer.isFaultless);
    std::string read(100, '\0');
    auto const count = ::pread(answer.report.number(), read.data(), read.size(), 0);
    EXPECT_EQ(read.substr(0, static_cast<std::size_t>(std::max<ssize_t>(count, 0))), "the report");
    EXPECT_FALSE(std::filesystem::exists(place.parent_path()));
}

// An object that takes a number for the name of a file.
TEST_F(StreamCommand, RemovesAFileThatANumberNames) {
    executeM = [&](host::Command const& command, auto const&) {
        directoryM.write("5", "written");
        auto result = host::begunResult(command);
        result.isHandled = true;
        auto& file = result.files.emplace_back();
        file.path = directoryM.path() / "5";
        file.isOpened = true;
        return std::optional(result);
    };
    auto const answer = send("O: {Dump: 5}");
    EXPECT_FALSE(answer.isFaultless);
    EXPECT_THAT(answer.result, HasSubstr("it is removed again"));
    EXPECT_TRUE(std::filesystem::is_empty(directoryM.path()));
}

TEST_F(StreamCommand, IsAnsweredForWhatTheHostOwnedAllTheTime) {
    host::CommandDirectory::Done later;
    executeM = [&](host::Command const& command, auto done) {
        later = std::move(done);
        EXPECT_EQ(command.update.find("Reload")->value(), "force");
        return std::optional<host::CommandResult>();
    };
    ownedM = {{0, 1, 2}, {1, 2, 3}};
    keptM.waiting.push_back({1, "O: {Reload: force}", "somebody", {}});
    takerM.takeSome(stopM);
    EXPECT_THAT(keptM.answers, IsEmpty());
    later(host::CommandResult());
    ASSERT_EQ(keptM.answers.size(), 1U);
    EXPECT_THAT(keptM.answers.front().partitions, ElementsAre(1, 2));

    ownedM = {{}};
    EXPECT_THAT(send("O: {Reload: force}").partitions, IsEmpty());
    EXPECT_EQ(executedM, 1U);
}

// Whoever sends many doesn't keep the host from everything else, nor from stopping.
TEST_F(StreamCommand, IsTakenWithAFewOthersAtATime) {
    executeM = [](host::Command const& command, auto const&) {
        return std::optional(host::begunResult(command));
    };
    constexpr std::size_t count = 40;
    for (std::size_t i = 0; i < count; ++i) {
        keptM.waiting.push_back({i, "O: {Reload: force}", "somebody", {}});
    }
    for (bool doMoreWait = true; doMoreWait;) {
        auto const before = executedM;
        doMoreWait = takerM.takeSome(stopM);
        EXPECT_LE(executedM - before, 16U);
    }
    EXPECT_EQ(executedM, count);
    keptM.waiting.push_back({count, "O: {Reload: force}", "somebody", {}});
    stopM.set();
    EXPECT_FALSE(takerM.takeSome(stopM));
    EXPECT_EQ(executedM, count);
}

class Object : public BAS::RegisteredObject {
public:
    Object() : RegisteredObject("O") {}
    bool registryUpdate(BAS::RegistryEntry const*, BAS::ProtectedBool&) override {
        ++updates;
        return true;
    }
    int updates = 0;
};

// Between a batch that went on for long and the next one.
TEST_F(StreamCommand, IsNotBegunOnceItsSenderHasGone) {
    Object object;
    host::FairLock pipeline;
    host::WriteWatch watch;
    host::CommandTimer timer(logM, stopM, std::chrono::seconds(5));
    host::Command command{BAS::RegistryEntry("O")};
    command.update.add("Dump", "@" + (directoryM.path() / "report").string());
    command.latest = std::chrono::steady_clock::now() + std::chrono::milliseconds(50);
    host::CommandResult result;
    std::unique_lock batch(pipeline);
    std::jthread executor([&] {
        result = host::executeCommand(command, object, {&pipeline, watch, timer});
    });
    std::this_thread::sleep_until(*command.latest);
    batch.unlock();
    executor.join();
    EXPECT_EQ(object.updates, 0);
    EXPECT_THAT(result.fault.value_or(""), HasSubstr("its sender waits no longer"));
    EXPECT_TRUE(std::filesystem::is_empty(directoryM.path()));
}

} // namespace
