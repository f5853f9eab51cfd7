#include "Publisher.h"

#include "PartitionWriter.h"
#include "PublishedSource.h"
#include "StreamNames.h"
#include "base/EscapedText.h"
#include "base/MessageCatalogue.h"
#include "base/Terminal.h"
#include "input/InputStateFile.h"
#include "input/LineReader.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <deque>
#include <iostream>
#include <stdexcept>

namespace stream {

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto mostDelay = std::chrono::milliseconds(200);
constexpr auto drawInterval = std::chrono::milliseconds(500);

// Of lines, published ones, those that were before, and rejected ones; of messages; seconds; lines
// a second.
constexpr char const* textSummary = "Lines: {}, published: {}, published before: {}, rejected: {}, "
                                    "messages: {}, seconds: {:.3f}, lines/s: {:.0f}\n";
constexpr char const* jsonSummary =
    R"({{"Lines": {}, "Published": {}, "PublishedBefore": {}, "Rejected": {}, )"
    R"("Messages": {}, "Seconds": {:.3f}, "LinesPerSecond": {:.0f}}})"
    "\n";

// What tells a file from another one, also when that is called so tomorrow.
std::string sourceName(std::filesystem::path const& file) {
    if (file == "-") {
        return fmt::format("standard input {}",
                           std::chrono::system_clock::now().time_since_epoch().count());
    }
    auto const identity = host::FileIdentity::of(file).value_or(host::FileIdentity{});
    return fmt::format("{} {} {} {}", host::printable(file.filename().string()), identity.inode,
                       identity.size, identity.modified);
}

class Publisher {
public:
    Publisher(host::PipelineConfiguration const& pipeline, host::StreamSource const& source,
              host::OutputForm form, host::Notification const& stop)
        : pipelineM(pipeline), streamM(*pipeline.stream), sourceM(source), formM(form), stopM(stop),
          keysM(source.keys), connectionM(streamM, {&onAcknowledgement, this}) {
        for (auto const& file : source.files) {
            namesM.push_back(source.name.value_or(sourceName(file)));
        }
    }
    ~Publisher() { connectionM.close(); }
    Publisher(Publisher const&) = delete;
    Publisher& operator=(Publisher const&) = delete;

    host::ExitCode publish() {
        openPartitions();
        for (fileM = 0; fileM < sourceM.files.size() && !stopM.isSet(); ++fileM) {
            publishFile();
        }
        for (auto& partition : partitionsM) {
            flush(partition);
        }
        for (auto& partition : partitionsM) {
            partition.writer.finish();
        }
        return summarize();
    }

private:
    struct Partition {
        Partition(Connection& connection, host::StreamConfiguration const& stream,
                  std::uint64_t number, host::Notification const& stop)
            : writer(connection, stream, number, stop) {}

        PartitionWriter writer;
        // Up to there it has everything: of files before that one all lines.
        std::size_t doneFile = 0;
        std::uint64_t doneLine = 0;
        // Of the next message:
        std::string text;
        std::size_t lines = 0;
        SourcePlace end;
        Clock::time_point begin;
    };

    // On a thread of the library. The message is the handler's; its subject ends in the partition.
    static void onAcknowledgement(jsCtx* /*context*/, natsMsg* message, jsPubAck* acknowledgement,
                                  jsPubAckErr* error, void* closure) {
        Message const own(message);
        auto& partitions = static_cast<Publisher*>(closure)->partitionsM;
        std::string_view const name = natsMsg_GetSubject(message);
        long number = -1;
        BAS::String(std::string(name.substr(name.rfind('.') + 1))).toNum(number);
        if (number < 0 || static_cast<std::size_t>(number) >= partitions.size()) {
            return;
        }
        auto& writer = partitions[static_cast<std::size_t>(number)].writer;
        if (error != nullptr) {
            writer.fail();
        } else {
            writer.acknowledge(acknowledgement->Sequence);
        }
    }

    void openPartitions() {
        std::string gone;
        for (std::uint64_t number = 0; number < streamM.partitionCount; ++number) {
            auto& partition = partitionsM.emplace_back(connectionM, streamM, number, stopM);
            if (partition.writer.hasLastGone() && sourceM.from == 0) {
                gone += (gone.empty() ? "" : ", ") + streamName(streamM.name, number);
            }
            findDone(partition);
        }
        if (!gone.empty()) {
            throw failure(streamM.name, "finding the last published line",
                          "the last message of " + gone +
                              " is gone; --from LINE says where to go on");
        }
    }

    void findDone(Partition& partition) const {
        partition.doneLine = sourceM.from == 0 ? 0 : sourceM.from - 1;
        auto const& last = partition.writer.last();
        for (std::size_t file = 0; file < namesM.size(); ++file) {
            if (last && namesM[file] == last->source) {
                partition.doneFile = file;
                partition.doneLine = last->line;
            }
        }
    }

    void publishFile() {
        host::InputFile file(sourceM.files[fileM], std::nullopt, {&stopM, nullptr});
        host::LineReader lines(file, pipelineM.maxLineLength, KeyFields::padding);
        try {
            while (!stopM.isSet() && lines.nextLine()) {
                take(lines);
                if (!lines.hasLine()) {
                    flushOverdue(file.hasBytes() ? Clock::now() - mostDelay : Clock::now());
                    draw();
                }
            }
        } catch (host::InputStopped const&) {
            return; // the next run goes on there
        }
    }

    void take(host::LineReader const& lines) {
        ++linesM;
        if (lines.isTooLong()) {
            ++rejectedM;
            std::cerr << host::printable(fmt::format(
                             "{}:{}: the line is longer than {} bytes and isn't published",
                             sourceM.files[fileM].string(), lines.number(),
                             pipelineM.maxLineLength))
                      << std::endl;
            return;
        }
        auto const line = lines.line();
        auto& partition = partitionsM[keysM.partitionOf(line, partitionsM.size())];
        if (fileM < partition.doneFile ||
            (fileM == partition.doneFile && lines.number() <= partition.doneLine)) {
            ++skippedM;
            return;
        }
        if (partition.lines > 0 && partition.text.size() + line.size() + 1 > mostBytes) {
            flush(partition);
        }
        if (partition.lines == 0) {
            partition.begin = Clock::now();
        }
        partition.text.append(line) += '\n';
        partition.end = {namesM[fileM], lines.number()};
        if (++partition.lines == mostLines) {
            flush(partition);
        }
    }

    void flush(Partition& partition) {
        if (partition.lines > 0) {
            partition.writer.send(partition.text, partition.end);
            partition.text.clear();
            partition.lines = 0;
        }
    }

    // What was begun before that time.
    void flushOverdue(Clock::time_point time) {
        for (auto& partition : partitionsM) {
            if (partition.begin <= time) {
                flush(partition);
            }
        }
    }

    void draw() {
        if (host::canEraseTerminalLine() && Clock::now() >= drawM) {
            drawM = Clock::now() + drawInterval;
            std::cerr << host::eraseTerminalLine << linesM << " lines" << std::flush;
        }
    }

    host::ExitCode summarize() const {
        std::uint64_t messages = 0;
        for (auto const& partition : partitionsM) {
            messages += partition.writer.messages();
        }
        auto const seconds = std::chrono::duration<double>(Clock::now() - beginM).count();
        auto const published = linesM - skippedM - rejectedM;
        auto const perSecond = seconds > 0 ? static_cast<double>(published) / seconds : 0.0;
        if (host::canEraseTerminalLine()) {
            std::cerr << host::eraseTerminalLine;
        }
        std::cout << fmt::format(
                         fmt::runtime(formM == host::OutputForm::json ? jsonSummary : textSummary),
                         linesM, published, skippedM, rejectedM, messages, seconds, perSecond)
                  << std::flush;
        return !std::cout       ? host::inputOrOutputFailed
               : rejectedM == 0 ? host::done
                                : host::doneWithFaults;
    }

    host::PipelineConfiguration const& pipelineM;
    host::StreamConfiguration const& streamM;
    host::StreamSource const& sourceM;
    host::OutputForm formM;
    host::Notification const& stopM;
    KeyFields keysM;
    std::vector<std::string> namesM; // of the files, in the stream
    std::deque<Partition> partitionsM;
    Connection connectionM;
    std::size_t fileM = 0;
    std::uint64_t linesM = 0;
    std::uint64_t skippedM = 0;
    std::uint64_t rejectedM = 0;
    Clock::time_point beginM = Clock::now();
    Clock::time_point drawM;
};

bool canBeReadAgain(host::StreamSource const& source) {
    return std::find(source.files.begin(), source.files.end(), "-") == source.files.end();
}

} // namespace

host::ExitCode publishFiles(host::PipelineConfiguration const& pipeline,
                            host::StreamSource const& source, host::OutputForm form,
                            host::Notification const& stop) {
    for (;;) {
        try {
            return Publisher(pipeline, source, form, stop).publish();
        } catch (AcknowledgedLost const&) {
            if (!canBeReadAgain(source)) {
                throw failure(pipeline.stream->name, "publishing standard input",
                              "the stream lost messages that it had acknowledged, and they can't "
                              "be read again");
            }
        } catch (std::invalid_argument const& badKey) {
            std::cerr << host::printable(badKey.what()) << std::endl;
            return host::usageWrong;
        }
    }
}

} // namespace stream
