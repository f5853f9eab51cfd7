// Compressed inputs as the ordinary tools make them.
#include "BAS/Status.h"
#include "EDR/Container.h"
#include "support/EdrText.h"
#include "support/FileInput.h"
#include "support/LogRecorder.h"
#include "support/TemporaryDirectory.h"

#include <gmock/gmock.h>

#include <cstdlib>

namespace {

constexpr int lineCount = 20'000; // several blocks of either format

std::string someLines(int from, int to) {
    std::string text;
    for (int i = from; i < to; ++i) {
        // A pattern without repetitions, so that the compressed text isn't all one block.
        text += "{\"A\":\"" + std::to_string(i) + "-" +
                std::to_string(static_cast<unsigned>(i) * 2654435761U) + "\"}\n";
    }
    return text;
}

class CompressedInput : public testing::Test {
protected:
    CompressedInput() {
        support::describeField(descriptionM, "DETAIL.A");
        pipelineM.registeredName = "host.Pipelines.P";
    }

    std::string path(std::string const& name) const { return (directoryM.path() / name).string(); }

    // What the tool, such as "gzip -c", makes of the text.
    std::string compressed(std::string const& tool, std::string const& text) {
        auto const command =
            tool + " <'" + directoryM.write("plain", text) + "' >'" + path("packed") + "'";
        EXPECT_EQ(std::system(command.c_str()), 0) << command;
        return directoryM.read("packed");
    }

    struct Outcome {
        int edrs = 0;        // as they were written, from the first on
        std::string failure; // the file and the reason
    };

    // Reads a file until its end or until it fails.
    Outcome readAll(std::string const& name, std::string const& content) {
        Outcome outcome;
        support::FileInput input({directoryM.write(name, content), path("reject")}, pipelineM,
                                 descriptionM, logM, portionsM);
        EDR::Container container(descriptionM);
        try {
            while (input.next(container)) {
                auto const text = container.getString(descriptionM.findField("DETAIL.A")).str();
                outcome.edrs += text.starts_with(std::to_string(outcome.edrs) + "-") ? 1 : 0;
            }
        } catch (BAS::Status& status) {
            outcome.failure = status.arguments()[0].str() + ": " + status.arguments()[1].str();
        }
        return outcome;
    }

    EDR::Description descriptionM;
    host::PipelineConfiguration pipelineM;
    support::TemporaryDirectory directoryM;
    support::LogRecorder logM;
    host::InputPortions portionsM;
};

TEST_F(CompressedInput, ReadsAsTheTextThatWasCompressed) {
    auto const first = someLines(0, lineCount / 2);
    auto const second = someLines(lineCount / 2, lineCount);
    auto const gzip = compressed("gzip -c", first) + compressed("gzip -1c", second);
    // The second begins in the middle of a line.
    auto const zstd = compressed("zstd -qc", first + second.substr(0, 7)) +
                      compressed("zstd -qc --no-check", second.substr(7));
    struct {
        char const* file;
        std::string const& content;
    } const cases[] = {
        {"in.jsonl.gz", gzip}, {"in.jsonl.zst", zstd}, {"gzip", gzip}, {"zstd", zstd}};
    for (auto const& each : cases) {
        auto const outcome = readAll(each.file, each.content);
        EXPECT_EQ(outcome.edrs, lineCount) << each.file;
        EXPECT_EQ(outcome.failure, "") << each.file;
    }
    EXPECT_EQ(readAll("empty.gz", compressed("gzip -c", "")).failure, "");
    EXPECT_EQ(readAll("empty.zst", compressed("zstd -qc", "")).failure, "");
}

TEST_F(CompressedInput, GivesWhatStandsBeforeADamage) {
    auto const text = someLines(0, lineCount);
    for (std::string const format : {"gzip", "zstd"}) {
        auto const name = format == "gzip" ? "in.gz" : "in.zst";
        auto const whole = compressed(format == "gzip" ? "gzip -c" : "zstd -qc", text);
        auto const half = whole.size() / 2;
        auto overwritten = whole;
        overwritten.replace(half, 4000, 4000, '\xff');
        auto wrongSum = whole;
        wrongSum[wrongSum.size() - (format == "gzip" ? 8U : 1U)] ^= 1;
        struct {
            std::string content;
            int least; // EDRs
            int most;
            std::string reason; // its beginning
        } const cases[] = {
            {whole.substr(0, half), lineCount / 4, lineCount - 1,
             "the " + format + " data end unexpectedly after byte " + std::to_string(half)},
            {whole.substr(0, whole.size() - 1), lineCount, lineCount,
             "the " + format + " data end unexpectedly after byte " +
                 std::to_string(whole.size() - 1)},
            {overwritten, 1, lineCount - 1, "expected " + format + " data at byte "},
            {wrongSum, lineCount, lineCount, "expected " + format + " data at byte "},
            {whole + "{}\n", lineCount, lineCount, "expected " + format + " data at byte "},
            {"", 0, 0, "the " + format + " data end unexpectedly after byte 0"},
            {text, 0, 0, "expected " + format + " data at byte "},
        };
        for (auto const& each : cases) {
            auto const outcome = readAll(name, each.content);
            EXPECT_THAT(outcome.edrs,
                        testing::AllOf(testing::Ge(each.least), testing::Le(each.most)))
                << each.reason;
            EXPECT_THAT(outcome.failure, testing::StartsWith(path(name) + ": " + each.reason));
        }
    }
}

} // namespace
