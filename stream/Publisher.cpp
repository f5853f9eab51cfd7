#include "Publisher.h"

#include "PartitionWriter.h"
#include "PublishedSource.h"
#include "Resumption.h"
#include "SourceLines.h"
#include "StreamNames.h"
#include "base/EscapedText.h"
#include "base/LogFile.h"
#include "base/MessageCatalogue.h"
#include "base/Terminal.h"
#include "input/LineReader.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <deque>
#include <iostream>
#include <list>
#include <mutex>
#include <stdexcept>

namespace stream {

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto mostDelay = std::chrono::milliseconds(200);
constexpr auto drawInterval = std::chrono::milliseconds(500);
// For what is on its way when stop is set.
constexpr auto stopTime = std::chrono::seconds(1);

// Of lines, published ones, those that were before, and rejected ones; of messages; seconds; lines
// a second.
constexpr char const* textSummary = "Lines: {}, published: {}, published before: {}, rejected: {}, "
                                    "messages: {}, seconds: {:.3f}, lines/s: {:.0f}\n";
constexpr char const* jsonSummary =
    R"({{"Lines": {}, "Published": {}, "PublishedBefore": {}, "Rejected": {}, )"
    R"("Messages": {}, "Seconds": {:.3f}, "LinesPerSecond": {:.0f}}})"
    "\n";

class Publisher {
public:
    Publisher(host::PipelineConfiguration const& pipeline, host::StreamSource const& source,
              host::OutputForm form, host::Notification const& stop)
        : pipelineM(pipeline), streamM(*pipeline.stream), sourceM(source), formM(form),
          stopM(stop, stopTime), keysM(source.keys),
          resumptionM(streamM.name, source, longestLine(), stop, logM),
          connectionM(streamM, {&onAcknowledgement, &acknowledgedM}) {
        acknowledgedM.publisher = this;
    }
    ~Publisher() {
        connectionM.close();
        std::lock_guard const guard(acknowledgedM.lock);
        acknowledgedM.publisher = nullptr;
    }
    Publisher(Publisher const&) = delete;
    Publisher& operator=(Publisher const&) = delete;

    host::ExitCode publish() {
        try {
            openPartitions();
            publishAll();
        } catch (PublishingStopped const&) {
            isCompleteM = false;
        } catch (AcknowledgedLost const&) {
            if (std::all_of(sourceM.files.begin(), sourceM.files.end(), &canBeReadAgain)) {
                throw;
            }
            summarize();
            throw failure(streamM.name, "publishing what can be read only once",
                          "the stream lost messages that it had acknowledged");
        } catch (BAS::Status const&) {
            if (linesM > 0) {
                summarize();
            }
            throw;
        }
        summarize();
        return !std::cout       ? host::inputOrOutputFailed
               : !isCompleteM   ? host::interrupted
               : rejectedM == 0 ? host::done
                                : host::doneWithFaults;
    }

private:
    struct Partition {
        Partition(Connection& connection, host::StreamConfiguration const& stream,
                  std::uint64_t number, GracePeriod& stop, BAS::LogSink& log)
            : writer(connection, stream, number, stop, log) {}

        PartitionWriter writer;
        ResumePoint done;
        SourceLines next; // message
        Clock::time_point begin;
    };

    // Who gets the acknowledgements of a connection. It outlives its publisher, as the library may
    // still be about to hand one over after the connection was closed.
    struct Acknowledged {
        std::mutex lock;
        Publisher* publisher = nullptr;
    };
    inline static std::list<Acknowledged> allAcknowledgedM;

    // On a thread of the library. The message is the handler's; its subject ends in the partition.
    static void onAcknowledgement(jsCtx* /*context*/, natsMsg* message, jsPubAck* acknowledgement,
                                  jsPubAckErr* error, void* closure) {
        Message const own(message);
        auto& acknowledged = *static_cast<Acknowledged*>(closure);
        std::lock_guard const guard(acknowledged.lock);
        if (acknowledged.publisher == nullptr) {
            return;
        }
        auto& partitions = acknowledged.publisher->partitionsM;
        std::string_view const name = natsMsg_GetSubject(message);
        long number = -1;
        BAS::String(std::string(name.substr(name.rfind('.') + 1))).toNum(number);
        if (number < 0 || static_cast<std::size_t>(number) >= partitions.size()) {
            return;
        }
        auto& writer = partitions[static_cast<std::size_t>(number)].writer;
        if (error != nullptr) {
            writer.fail(*error);
        } else {
            writer.acknowledge(acknowledgement->Sequence);
        }
    }

    void openPartitions() {
        std::string gone;
        std::vector<std::optional<SourcePlace>> lasts;
        for (std::uint64_t number = 0; number < streamM.partitionCount; ++number) {
            auto const& writer =
                partitionsM.emplace_back(connectionM, streamM, number, stopM, logM).writer;
            lasts.push_back(writer.last());
            if (writer.hasLastGone() && sourceM.from == 0) {
                gone += (gone.empty() ? "" : ", ") + streamName(streamM.name, number);
            }
        }
        if (!gone.empty()) {
            throw failure(streamM.name, "finding the last published line",
                          "the last message of " + gone +
                              " is gone; --from LINE says where to go on");
        }
        auto const points = resumptionM.find(lasts);
        for (std::size_t number = 0; number < points.size(); ++number) {
            partitionsM[number].done = points[number];
            if (points[number].isKnown) {
                requireAllBefore(partitionsM[number], number);
            }
        }
    }

    // What was sent while another publisher wrote to the stream may have come in part.
    void requireAllBefore(Partition& partition, std::uint64_t number) {
        auto const missing = partition.writer.missingUpTo();
        if (missing && sourceM.from == 0) {
            throw failure(streamM.name, "finding the last published line",
                          fmt::format("{} has line {} of '{}', but not all of its lines up to {}, "
                                      "since another publisher wrote to it at the same time; "
                                      "--from LINE says where to go on",
                                      streamName(streamM.name, number),
                                      partition.writer.last()->line,
                                      partition.writer.last()->source, *missing));
        }
        if (missing) {
            partition.done = resumptionM.atFrom();
        }
    }

    void publishAll() {
        for (fileM = 0; fileM < sourceM.files.size() && isCompleteM; ++fileM) {
            isCompleteM = publishFile();
        }
        for (auto& partition : partitionsM) {
            flush(partition);
        }
        finish();
    }

    // False when stop was set before its end.
    bool publishFile() {
        host::InputFile file(sourceM.files[fileM], std::nullopt, {&stopM.stop(), nullptr});
        host::LineReader lines(file, longestLine(), KeyFields::padding);
        sumsM = {};
        notePassed();
        try {
            while (!stopM.isStopping()) {
                if (!lines.nextLine()) {
                    requireExpected(lines.number(), true);
                    return true;
                }
                sumsM.add(lines);
                requireExpected(lines.number(), false);
                take(lines);
                if (!lines.hasLine()) {
                    sendInTime(file);
                    draw();
                }
            }
        } catch (host::InputStopped const&) {
            return false;
        }
        return false;
    }

    // A source that can't be read twice is compared while it is read.
    void requireExpected(std::uint64_t number, bool isAtEnd) const {
        auto const& expected = resumptionM.expected();
        if (expected && (isAtEnd ? number < expected->line
                                 : number == expected->line && sumsM.sums() != expected->sums)) {
            throw resumptionM.isAnother(*expected);
        }
    }

    void notePassed() {
        auto const isPassed = [this](auto const& partition) { return partition.done.file > fileM; };
        auto const first = std::find_if(partitionsM.begin(), partitionsM.end(), isPassed);
        if (first != partitionsM.end()) {
            auto const count = std::count_if(first, partitionsM.end(), isPassed);
            logM.write(host::makeStatus(
                BAS::Status::notice, {}, "MSG_SOURCE_PASSED",
                {sourceM.files[fileM].string(), sourceM.files[first->done.file].string(),
                 std::to_string(count), std::to_string(partitionsM.size())}));
        }
    }

    // No host takes more than that.
    std::size_t longestLine() const {
        return std::min(pipelineM.maxLineLength, mostDecodedBytes - 1);
    }

    void take(host::LineReader const& lines) {
        ++linesM;
        if (lines.isTooLong()) {
            ++rejectedM;
            std::cerr << host::printable(fmt::format(
                             "{}:{}: the line is longer than {} bytes and isn't published",
                             sourceM.files[fileM].string(), lines.number(), longestLine()))
                      << std::endl;
            return;
        }
        auto const line = lines.line();
        auto& partition = partitionsM[keysM.partitionOf(line, partitionsM.size())];
        auto const& done = partition.done;
        if (fileM < done.file || (fileM == done.file && lines.number() <= done.line)) {
            ++skippedM;
            return;
        }
        auto& next = partition.next;
        auto const& name = resumptionM.names()[fileM];
        if (next.bytes() + line.size() + 1 > mostBytes || next.source() != name) {
            flush(partition);
        }
        if (next.isEmpty()) {
            next.begin(name);
            partition.begin = Clock::now();
        }
        next.add(line, lines.number(), sumsM.sums());
        if (next.size() == mostLines) {
            flush(partition);
        }
    }

    static void flush(Partition& partition) {
        if (!partition.next.isEmpty()) {
            partition.writer.send(partition.next);
            partition.next.clear();
        }
    }

    // What was begun goes out after the delay also while no lines come, and when that lasts, it is
    // waited for: else nobody would look after what the servers didn't take.
    void sendInTime(host::InputFile const& file) {
        flushOverdue();
        while (auto const begin = firstBegin()) {
            if (file.waitForBytes(*begin + mostDelay)) {
                return;
            }
            flushOverdue();
        }
        if (!file.hasBytes()) {
            finish();
        }
    }

    std::optional<Clock::time_point> firstBegin() const {
        std::optional<Clock::time_point> first;
        for (auto const& partition : partitionsM) {
            if (!partition.next.isEmpty()) {
                first = std::min(first.value_or(partition.begin), partition.begin);
            }
        }
        return first;
    }

    void flushOverdue() {
        auto const latest = Clock::now() - mostDelay;
        for (auto& partition : partitionsM) {
            if (partition.begin <= latest) {
                flush(partition);
            }
        }
    }

    void finish() {
        for (auto& partition : partitionsM) {
            partition.writer.finish();
        }
    }

    void draw() {
        if (host::canEraseTerminalLine() && Clock::now() >= drawM) {
            drawM = Clock::now() + drawInterval;
            std::cerr << host::eraseTerminalLine << linesM << " lines" << std::flush;
        }
    }

    // What is known to be in the stream counts as published.
    void summarize() const {
        std::uint64_t published = 0;
        std::uint64_t messages = 0;
        for (auto const& partition : partitionsM) {
            published += partition.writer.lines();
            messages += partition.writer.messages();
        }
        auto const seconds = std::chrono::duration<double>(Clock::now() - beginM).count();
        auto const perSecond = seconds > 0 ? static_cast<double>(published) / seconds : 0.0;
        if (host::canEraseTerminalLine()) {
            std::cerr << host::eraseTerminalLine;
        }
        std::cout << fmt::format(
                         fmt::runtime(formM == host::OutputForm::json ? jsonSummary : textSummary),
                         linesM, published, skippedM, rejectedM, messages, seconds, perSecond)
                  << std::flush;
    }

    host::PipelineConfiguration const& pipelineM;
    host::StreamConfiguration const& streamM;
    host::StreamSource const& sourceM;
    host::OutputForm formM;
    GracePeriod stopM;
    host::LogFile logM{BAS::Status::info}; // standard error
    KeyFields keysM;
    Resumption resumptionM;
    std::deque<Partition> partitionsM;
    Acknowledged& acknowledgedM = allAcknowledgedM.emplace_back();
    Connection connectionM;
    std::size_t fileM = 0;
    LineSums sumsM;          // of that file
    bool isCompleteM = true; // false when stop left something
    std::uint64_t linesM = 0;
    std::uint64_t skippedM = 0;
    std::uint64_t rejectedM = 0;
    Clock::time_point beginM = Clock::now();
    Clock::time_point drawM;
};

} // namespace

host::ExitCode publishFiles(host::PipelineConfiguration const& pipeline,
                            host::StreamSource const& source, host::OutputForm form,
                            host::Notification const& stop) {
    for (;;) {
        try {
            return Publisher(pipeline, source, form, stop).publish();
        } catch (AcknowledgedLost const&) {
            continue; // from what the stream has now
        } catch (std::invalid_argument const& error) {
            std::cerr << host::printable(error.what()) << std::endl;
            return host::usageWrong;
        }
    }
}

} // namespace stream
