#include "input/ReadAheadInput.h"

#include "EDR/Container.h"
#include "EDR/Iterator.h"
#include "support/AllocationCounter.h"
#include "support/EdrText.h"
#include "support/FileInput.h"
#include "support/LogRecorder.h"
#include "support/TemporaryDirectory.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/stat.h>

namespace {

using testing::ElementsAre;

// Fields DETAIL.A (text), .N (long), .T (date-time), blocks DETAIL.B and DETAIL.B.C with a field X
// each.
class EdrInputs : public testing::Test {
protected:
    EdrInputs() {
        support::describeField(descriptionM, "DETAIL.A");
        support::describeField(descriptionM, "DETAIL.N", EDR::FieldType::number);
        support::describeField(descriptionM, "DETAIL.T", EDR::FieldType::dateTime);
        support::describeField(descriptionM, "DETAIL.B.X");
        support::describeField(descriptionM, "DETAIL.B.C.X");
        pipelineM.registeredName = "host.Pipelines.P";
        pipelineM.maxLineLength = 500;
    }

    // Reads the whole text and returns each EDR as "KIND A N [X(X...)...]".
    std::vector<std::string> readAll(std::string const& text) {
        directoryM.write("in", text);
        auto const input = open();
        auto edrs = take(*input, SIZE_MAX);
        rejectedM = input->rejectedLines();
        return edrs;
    }

    std::unique_ptr<support::FileInput> open(host::InputPosition const& start = {}) {
        return std::make_unique<support::FileInput>(
            host::InputConfiguration{inputFile(), rejectFile()}, pipelineM, descriptionM, logM,
            portionsM, start);
    }

    std::vector<std::string> take(support::FileInput& input, std::size_t most) {
        std::vector<std::string> edrs;
        EDR::Container container(descriptionM);
        while (edrs.size() < most && input.next(container)) {
            edrs.push_back(render(container));
        }
        return edrs;
    }

    // The reason with which a single line is rejected, after the column if there is one; empty
    // when it is taken.
    std::string reasonFor(std::string const& line) {
        auto const before = logM.entries().size();
        bool const isTaken = !readAll(line + "\n").empty();
        std::string reason;
        for (auto i = before; i < logM.entries().size(); ++i) {
            auto const entry = logM.entries()[i];
            auto const start = "ERR_EDR_REJECTED(3) [" + inputFile() + "] [1";
            if (entry.starts_with(start)) {
                reason =
                    entry.substr(start.size(), entry.find("] [" + rejectFile()) - start.size());
                reason.replace(reason.find("] ["), 3, " ");
                reason.erase(0, 1);
            }
        }
        EXPECT_EQ(isTaken, reason.empty()) << line;
        EXPECT_EQ(isTaken ? "" : line + "\n", directoryM.read("in.reject"));
        return reason;
    }

    std::string inputFile() const { return (directoryM.path() / "in").string(); }
    std::string rejectFile() const { return inputFile() + ".reject"; }

    EDR::Description descriptionM;
    host::PipelineConfiguration pipelineM;
    support::TemporaryDirectory directoryM;
    support::LogRecorder logM;
    host::InputPortions portionsM;
    std::uint64_t rejectedM = 0;

private:
    std::string render(EDR::Container& container) {
        std::string text = std::to_string(container.recordKind()) + " " +
                           container.getString(descriptionM.findField("DETAIL.A")).str() + " " +
                           container.getString(descriptionM.findField("DETAIL.N")).str() + " [";
        auto const b = descriptionM.findBlock("DETAIL.B");
        auto const c = descriptionM.findBlock("DETAIL.B.C");
        EDR::Iterator blocks;
        blocks.setIndex(b);
        for (blocks.reset(&container); blocks(b);) {
            text += blocks.getString(descriptionM.findField("DETAIL.B.X")).str() + "(";
            while (blocks(c)) {
                text += blocks.getString(descriptionM.findField("DETAIL.B.C.X")).str() + ";";
            }
            text += ")";
        }
        return text + "]";
    }
};

TEST_F(EdrInputs, ReadRecordsWithNestedBlocksInAnyOrder) {
    struct {
        char const* line;
        char const* edr;
    } const cases[] = {
        {R"({})", "3   []"},
        {R"({"RECORD":"HEADER","A":"h"})", "1 h  []"},
        {R"({"A":"t","RECORD":"TRAILER"})", "2 t  []"},
        {R"({"A":null,"N":-12.50e+3,"B":null})", "3  -12.50e+3 []"},
        {R"({"N":123456789012345678901234567890})", "3  123456789012345678901234567890 []"},
        {R"( { "A" : "\u00e4\"\\\n" , "N" : 7 } )", "3 \xc3\xa4\"\\\n 7 []"},
        {R"({"B":[{"X":"1","C":[{"X":"a"},{"X":"b"}]},{"C":[],"X":"2"},{"C":[{"X":"c"}]}],"A":"z"})",
         "3 z  [1(a;b;)2()(c;)]"},
        // The child blocks stand before the block's own fields.
        {R"({"B":[{"C":[{"X":"a"}],"X":"1"},{"C":[{"X":"b"}],"X":"2"}]})", "3   [1(a;)2(b;)]"},
    };
    for (auto const& each : cases) {
        EXPECT_THAT(readAll(std::string(each.line) + "\n"), ElementsAre(each.edr)) << each.line;
    }
}

// Also a member that an earlier line makes expected is told by every byte of its name.
TEST(EdrLines, HaveAMemberOnlyByItsWholeName) {
    for (std::size_t length = 1; length <= 20; ++length) {
        std::string const name(length, 'X');
        EDR::Description description;
        support::describeField(description, "DETAIL." + name);
        host::EdrLineParser parser(description);
        EDR::Container container(description);
        auto const textOf = [&](std::string const& member) {
            auto line = "{\"" + member + "\":\"taken\"}";
            line.reserve(line.size() + host::EdrLineParser::padding);
            host::ParsedEdrs edrs;
            parser.parse(line, edrs);
            edrs.fill(container, 0);
            return container.getString(description.findField("DETAIL." + name)).str();
        };
        EXPECT_EQ(textOf(name), "taken");
        EXPECT_EQ(textOf(name), "taken");
        EXPECT_EQ(textOf(name + "X"), "");
        EXPECT_EQ(textOf(name.substr(1)), "");
        for (std::size_t at = 0; at < length; ++at) {
            auto other = name;
            other[at] = 'Y';
            EXPECT_EQ(textOf(other), "") << other;
        }
    }
}

TEST_F(EdrInputs, RejectLinesThatCantBeTaken) {
    struct {
        std::string line;
        char const* reason; // its beginning
    } const cases[] = {
        {"[1]", "1 expected a JSON object, which begins"},
        {"\"x\"", "1 expected a JSON object, which begins"},
        {"plain text", "1 not valid JSON: "},
        {"this is no json", "1 expected a JSON object, which begins"},
        {R"({"A":"x")", "not valid JSON: "},
        {R"({"A":"x"}})", "10 more text after the JSON object"},
        {R"({"A":"x"} {"A":"y"})", "11 more text after the JSON object"},
        {R"({"A":"x" "N":1})", "10 not valid JSON: "},
        {R"({"A":"x",})", "10 not valid JSON"},
        {R"({"A":nil})", "6 not valid JSON at A: "},
        {R"({"N":1.})", "6 not valid JSON at N: "},
        {R"({"N":-})", "6 not valid JSON at N: "},
        {R"({"N":012})", "6 not valid JSON at N: "},
        {R"({"A":"\ud800"})", "not valid JSON at A: "},
        {"{\"A\":\"a\tb\"}", "not valid JSON"},
        {"{\"A\":\"\xff\"}", "not valid UTF-8"},
        {"{\"\xc3\":1}", "not valid UTF-8"},
        {R"({"A":true})", "6 A: expected a string or a number, not a boolean"},
        {"\xef\xbb\xbf{\"A\":true}", "9 A: expected a string or a number, not a boolean"},
        {R"({"A":["x"]})", "6 A: expected a string or a number, not an array"},
        {R"({"A":{"X":"x"}})", "6 A: expected a string or a number, not an object"},
        {R"({"B":"x"})", "6 B: expected an array of objects, not a string"},
        {R"({"B":{"X":"x"}})", "6 B: expected an array of objects, not an object"},
        {R"({"B":["x"]})", "7 B[0]: expected an object, not a string"},
        {R"({"B":[{},{"C":[{},{},{"X":false}]}]})",
         "27 B[1].C[2].X: expected a string or a number, not a boolean"},
        {R"({"A":"x","N":1,"A":"y"})", "20 A: the member is given twice"},
        {R"({"B":[{"X":"1"},{"X":"1","X":"2"}]})", "30 B[1].X: the member is given twice"},
        {R"({"RECORD":"DETAIL","RECORD":"DETAIL"})", "29 RECORD: the member is given twice"},
        {R"({"RECORD":"detail"})", "11 RECORD: expected \"HEADER\", \"TRAILER\" or \"DETAIL\""},
        {R"({"RECORD":3})", "11 RECORD: expected \"HEADER\", \"TRAILER\" or \"DETAIL\""},
        // Within what is ignored, too, a line must be JSON.
        {R"({"Q":[1,,2]})", "9 not valid JSON at Q: "},
        {R"({"Q":{"a":tru}})", "11 not valid JSON at Q: "},
        {"{\"Q\":" + std::string(200, '[') + std::string(200, ']') + "}",
         "70 not valid JSON at Q: "},
        {"{\"A\":\"" + std::string(500, 'x') + "\"}", "the line is longer than 500 bytes"},
    };
    for (auto const& each : cases) {
        EXPECT_THAT(reasonFor(each.line), testing::StartsWith(each.reason)) << each.line;
        EXPECT_EQ(rejectedM, 1U) << each.line;
    }
}

TEST_F(EdrInputs, GoOnBehindRejectedLinesAndKeepThemVerbatim) {
    std::string const huge(200'000, 'x');
    EXPECT_THAT(readAll("\xef\xbb\xbf{\"A\":\"1\"}\r\n"
                        "\n  \t\r\n" +
                        huge + "\r\n" + "{\"A\":\"2\"}\n" + "{\"A\":\r\n" + huge + "\n" +
                        "{\"A\":\"3\"}\n" + "not valid JSON"),
                ElementsAre("3 1  []", "3 2  []", "3 3  []"));
    EXPECT_EQ(rejectedM, 4U);
    EXPECT_EQ(directoryM.read("in.reject"), huge + "\r\n{\"A\":\r\n" + huge + "\nnot valid JSON");
    std::vector<std::string> lines;
    for (auto const& entry : logM.entries()) {
        lines.push_back(entry.substr(entry.find("] [") + 2, 4));
    }
    EXPECT_THAT(lines, ElementsAre("[4] ", "[6] ", "[7] ", "[9:1"));

    EXPECT_THAT(readAll("{\"A\":\"last\"}"), ElementsAre("3 last  []"));
    EXPECT_FALSE(std::filesystem::exists(rejectFile())) << "of the run before";
}

// Lines of every length around the limit and across the ends of the reader's buffer.
TEST_F(EdrInputs, TakeLinesUpToTheLimit) {
    pipelineM.maxLineLength = 70'000;
    auto const line = [](std::size_t length) {
        return "{\"A\":\"" + std::string(length - 8, 'x') + "\"}";
    };
    std::string text;
    std::vector<std::string> expected;
    for (std::size_t const length : {69'998UL, 69'999UL, 70'000UL, 70'001UL, 70'002UL, 70'003UL}) {
        for (auto const* const end : {"\n", "\r\n"}) {
            text += line(length) + end + line(20) + end;
            if (length <= 70'000) {
                expected.push_back("3 " + std::string(length - 8, 'x') + "  []");
            }
            expected.push_back("3 " + std::string(12, 'x') + "  []");
        }
    }
    EXPECT_EQ(readAll(text), expected);
    EXPECT_EQ(rejectedM, 6U);
}

TEST_F(EdrInputs, ReportUnknownFieldsOnceForEachPath) {
    EXPECT_THAT(readAll("{\"Q\":1,\"A\":\"a\",\"B\":[{\"Q\":{\"A\":[true]}},{\"Q\":null}]}\n"
                        "{\"Q\":[],\"R\\n\":\"x\"}\n"),
                ElementsAre("3 a  [()()]", "3   []"));
    auto const start = "ERR_EDR_FIELD_UNKNOWN(3) [" + inputFile() + "] ";
    EXPECT_THAT(logM.entries(),
                ElementsAre(start + "[1] [DETAIL.Q] [ (did you mean 'A'?)] @host.Pipelines.P",
                            start + "[1] [DETAIL.B.Q] [ (did you mean 'X'?)] @host.Pipelines.P",
                            start + "[2] [DETAIL.R\n] [] @host.Pipelines.P"));
}

TEST_F(EdrInputs, StopReportingWhenEveryLineHasFieldsOfItsOwn) {
    std::string text;
    for (int i = 0; i < 500; ++i) {
        text += "{\"Q" + std::to_string(i) + "\":1}\n";
    }
    EXPECT_EQ(readAll(text).size(), 500U);
    EXPECT_EQ(logM.entries().size(), 101U);
    EXPECT_THAT(logM.entries().back(), testing::StartsWith("ERR_EDR_FIELDS_UNKNOWN"));
}

// Whatever the reader has seen by then.
TEST_F(EdrInputs, GoOnBehindAnyEdrAsIfNothingHadBeenReadAhead) {
    std::string text;
    for (int i = 0; i < 6; ++i) {
        text += "{\"A\":\"" + std::to_string(i) + "\"}\n" + (i % 3 == 1 ? "\nbad\n" : "") +
                (i == 4 ? "{\"A\":\"4\",\"Q\":0}\n" : "");
    }
    auto const all = readAll(text);
    ASSERT_EQ(all.size(), 7U);
    for (std::size_t taken = 0; taken <= all.size(); ++taken) {
        SCOPED_TRACE(taken);
        auto const logged = logM.entries().size();
        auto first = open();
        auto edrs = take(*first, taken);
        auto const position = first->position();
        first.reset();
        // Lines 3 and 8 are rejected, each when the EDR after it is read; the unknown field
        // stands in the sixth EDR.
        EXPECT_EQ(logM.entries().size() - logged, (taken > 2) + (taken > 5) + (taken > 6));
        auto const second = open(position);
        auto const rest = take(*second, SIZE_MAX);
        edrs.insert(edrs.end(), rest.begin(), rest.end());
        EXPECT_EQ(edrs, all);
        EXPECT_EQ(directoryM.read("in.reject"), "bad\nbad\n");
    }
}

// Whichever allocation fails, the pipeline gets no part of an EDR.
TEST_F(EdrInputs, AreWholeOrAbsentWithoutMemory) {
    host::InputPlace const firstEnd = {7, 8, 9};
    for (std::string text :
         {R"({"A":"1","B":[{"X":"2","C":[{"X":"3"}]}]})", R"({"A":"\n","N":5,"B":[{"X":"2"}]})",
          R"({"A":"1","unknown":2})", R"({"A":"1","B":[{"X":{}}]})"}) {
        text.reserve(text.size() + host::EdrLineParser::padding);
        bool anyFailed = true;
        for (std::size_t after = 0; anyFailed; ++after) {
            host::EdrLineParser parser(descriptionM);
            host::PortionFiller filler(pipelineM, parser);
            host::InputPortion portion;
            auto const take = [&](host::InputPlace const& end) {
                filler.take(portion, text, text, end, [] {
                    return host::LineOrigin{"in", "1", ""};
                });
            };
            take(firstEnd);
            auto const whole = portion.edrs.count();
            bool isTaken = true;
            support::failAllocations(after, 1);
            try {
                take({7, 8, 10});
            } catch (std::bad_alloc const&) {
                isTaken = false;
            }
            anyFailed = support::stopFailingAllocations();
            ASSERT_EQ(portion.edrs.count(), isTaken ? 2 * whole : whole) << text << " " << after;
            ASSERT_TRUE(whole == 0 || portion.edrs.endOf(0) == firstEnd) << text << " " << after;
        }
    }
}

// A reader that waits for bytes, or for memory, is waited for by nobody.
TEST_F(EdrInputs, EndWithTheirReader) {
    ASSERT_EQ(::mkfifo(inputFile().c_str(), 0600), 0);
    int const writer = ::open(inputFile().c_str(), O_RDWR);
    std::string const line = "{\"A\":\"1\"}\n";
    auto input = open();
    ASSERT_EQ(::write(writer, line.data(), line.size()), static_cast<ssize_t>(line.size()));
    EXPECT_THAT(take(*input, 1), ElementsAre("3 1  []"));
    input.reset();

    portionsM = {};
    input = open();
    EDR::Container container(descriptionM);
    std::exception_ptr failure;
    support::failAllocations(0, SIZE_MAX);
    auto const written = ::write(writer, line.data(), line.size());
    try {
        input->next(container);
    } catch (...) {
        failure = std::current_exception();
    }
    support::stopFailingAllocations();
    ASSERT_EQ(written, static_cast<ssize_t>(line.size()));
    ASSERT_NE(failure, nullptr);
    EXPECT_THROW(std::rethrow_exception(failure), std::bad_alloc);
    input.reset();
    ::close(writer);
}

} // namespace
