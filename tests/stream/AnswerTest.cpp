// Answers to commands to all hosts on their way, without servers.
#include "Answer.h"

#include "CommandMessages.h"
#include "support/TemporaryDirectory.h"

#include <gmock/gmock.h>

#include <fcntl.h>

#include <deque>

namespace {

using testing::HasSubstr;

constexpr std::uint64_t partitionCount = 8;

class Answer : public testing::Test {
protected:
    stream::OutgoingAnswer outgoing(std::string const& report) const {
        directoryM.write("sent", report);
        host::FileDescriptor file(::open((directoryM.path() / "sent").c_str(), O_RDONLY));
        return {{"a:1", {0, 1, 2, 5}, true, R"({"Verdict": "handled"})"}, std::move(file)};
    }
    stream::IncomingAnswer incoming() const {
        return {partitionCount, [this](auto const& head) {
                    auto const name = stream::partitionsText(head.partitions);
                    return std::make_unique<host::TemporaryFile>(directoryM.path() / name);
                }};
    }
    bool isReportThere() const { return std::filesystem::exists(directoryM.path() / "0-2,5"); }

    support::TemporaryDirectory directoryM;
};

std::string bytes(std::size_t count) {
    std::string text(count, '\0');
    std::uint32_t state = 1;
    for (char& each : text) {
        state = state * 1664525 + 1013904223;
        each = static_cast<char>(state >> 24);
    }
    return text;
}

// Every third message is lost, and every fifth comes twice and again later.
TEST_F(Answer, IsWholeWhateverTheWayLosesAndDoubles) {
    for (auto const size :
         {std::size_t{0}, std::size_t{1}, stream::pieceBytes, 20 * stream::pieceBytes + 7}) {
        auto const report = bytes(size);
        auto out = outgoing(report);
        auto in = incoming();
        std::deque<std::uint64_t> later;
        int sent = 0;
        int rounds = 0;
        while (!out.window().isDone() && ++rounds < 100) {
            std::uint64_t onTheWay = 0;
            while (auto const number = out.window().next()) {
                EXPECT_LE(++onTheWay, stream::mostOnTheWay);
                ++sent;
                if (sent % 3 == 0) {
                    continue;
                }
                EXPECT_EQ(isReportThere(), in.isWhole());
                in.add(*number, out.message(*number));
                if (sent % 5 == 0) {
                    in.add(*number, out.message(*number));
                    later.push_back(*number);
                }
            }
            for (; !later.empty(); later.pop_front()) {
                in.add(later.front(), out.message(later.front()));
            }
            out.window().acknowledge(in.had());
            out.window().repeat();
        }
        ASSERT_TRUE(in.isWhole()) << size;
        EXPECT_EQ(in.head()->host, "a:1");
        EXPECT_TRUE(in.head()->isFaultless);
        EXPECT_EQ(in.head()->result, R"({"Verdict":"handled"})");
        EXPECT_EQ(in.report(), directoryM.path() / "0-2,5");
        EXPECT_EQ(directoryM.read("0-2,5"), report);
        std::filesystem::remove(directoryM.path() / "0-2,5");
    }
}

TEST_F(Answer, SaysWhatIsMissingAndKeepsNothingOfIt) {
    auto out = outgoing(bytes(3 * stream::pieceBytes));
    {
        auto in = incoming();
        EXPECT_EQ(in.missing(), "it hasn't come");
        in.add(0, out.message(0));
        in.add(1, out.message(1));
        in.add(3, out.message(3));
        EXPECT_EQ(in.had(), 2U);
        EXPECT_EQ(in.missing(), "the pieces 2 to 3 of 3 are missing");
        in.add(2, out.message(2));
        EXPECT_EQ(in.missing(), "the piece 3 of 3 is missing");
        EXPECT_FALSE(in.isWhole());
    }
    std::filesystem::remove(directoryM.path() / "sent");
    EXPECT_TRUE(std::filesystem::is_empty(directoryM.path()));
}

TEST_F(Answer, IsNotTakenWhenItIsDamaged) {
    auto out = outgoing(bytes(stream::pieceBytes + 10));
    auto in = incoming();
    auto second = out.message(2);
    in.add(0, out.message(0));
    in.add(1, out.message(1));
    EXPECT_THROW(in.add(2, second + "x"), stream::MessageError);
    second[3] ^= 1;
    EXPECT_THROW(in.add(2, second), stream::MessageError);
    EXPECT_FALSE(in.isWhole());
    EXPECT_FALSE(isReportThere());
}

TEST_F(Answer, HasAHeadThatNamesPartitionsOfTheStream) {
    constexpr char const* format = R"({"Host":"h","Partitions":%,"Faultless":true,"Result":{},)"
                                   R"("Checksum":0})";
    for (auto const* const partitions :
         {"[]", "[8]", "[1,0]", "[1,1]", "[-1]", "\"../x\"", "[[0]]"}) {
        std::string text = format;
        text.replace(text.find('%'), 1, partitions);
        EXPECT_THROW(stream::parseHead(text, partitionCount), stream::MessageError) << partitions;
    }
    for (auto const* const text : {"", "{}", "[0]", R"({"Partitions":[0]})", "\xff"}) {
        EXPECT_THROW(stream::parseHead(text, partitionCount), stream::MessageError) << text;
    }
    auto head =
        stream::parseHead(stream::headText({"a\n\"", {7}, false, "{\n\"A\": 1}"}), partitionCount);
    EXPECT_EQ(head.host, "a\n\"");
    EXPECT_EQ(head.result, R"({"A":1})");
    EXPECT_FALSE(head.bytes);
}

TEST(PartitionsText, JoinsNeighbours) {
    EXPECT_EQ(stream::partitionsText({}), "");
    EXPECT_EQ(stream::partitionsText({3}), "3");
    EXPECT_EQ(stream::partitionsText({0, 1, 2, 4, 6, 7}), "0-2,4,6-7");
}

TEST(CommandMessage, IsALineOfAWordAndANumber) {
    auto const text = stream::commandMessage("answer", 12, "x\ny");
    auto const message = stream::parseCommandMessage(text);
    ASSERT_TRUE(message);
    EXPECT_EQ(message->word, "answer");
    EXPECT_EQ(message->number, 12U);
    EXPECT_EQ(message->rest, "x\ny");
    for (auto const* const bad : {"", "\n", "had", "had ", "had x", "had -1", "had 1 ",
                                  "had 99999999999999999999999", "had 1x\n"}) {
        EXPECT_FALSE(stream::parseCommandMessage(bad)) << bad;
    }
}

TEST(CommandMessage, GoesToOneWordOfTheStreamOnly) {
    EXPECT_EQ(stream::tokenOf("answer.Main.aZ09", "answer.Main."), "aZ09");
    for (auto const* const bad :
         {"", "answer.Main.", "answer.Other.a", "edr.Main.0", "answer.Main.a.b", "answer.Main.*",
          "answer.Main.>", "$JS.API.STREAM.DELETE.EDR_Main_0"}) {
        EXPECT_EQ(stream::tokenOf(bad, "answer.Main."), "") << bad;
    }
    EXPECT_EQ(stream::tokenOf("answer.Main." + std::string(65, 'a'), "answer.Main."), "");
    EXPECT_EQ(stream::newToken().size(), 32U);
}

} // namespace
