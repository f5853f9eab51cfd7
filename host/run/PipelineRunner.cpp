#include "run/PipelineRunner.h"

#include "PLG/FunctionPlugIn.h"
#include "base/Failures.h"
#include "base/MessageCatalogue.h"
#include "input/FileProgress.h"
#include "input/PortionReader.h"
#include "input/ReadAheadInput.h"
#include "registry/EdrDescriptionFile.h"
#include "registry/EdrNameHints.h"

#include <chrono>

namespace host {

PipelineRunner::PipelineRunner(PipelineConfiguration const& configuration, BAS::LogSink& processLog,
                               BAS::Status::Severity leastSeverity)
    : configurationM(configuration),
      ownLogM(configuration.log ? std::make_unique<LogFile>(*configuration.log, leastSeverity)
                                : nullptr),
      logM(ownLogM == nullptr ? processLog : *ownLogM),
      descriptionM(readEdrDescription(configuration.edrDescription)), factoryM(descriptionM),
      parserM(descriptionM) {
    if (!configuration.countBy.empty()) {
        countedFieldM = descriptionM.findField(configuration.countBy);
        if (!countedFieldM->isValid()) {
            throw makeStatus(BAS::Status::critical, configuration.registeredName,
                             "ERR_EDR_FIELD_NOT_FOUND",
                             {configuration.countBy, "", configuration.registeredName, "CountBy",
                              missingFieldHint(descriptionM, configuration.countBy)});
        }
    }
}

std::unique_ptr<BAS::RegisteredObject> PipelineRunner::makeRegisteredObject() const {
    return std::make_unique<PLG::Pipeline>(configurationM.registeredName, factoryM, logM);
}

void PipelineRunner::openStream(StreamLibrary& library) {
    streamM = library.makeInput(configurationM, descriptionM, logM);
}

void PipelineRunner::openInputDirectory() {
    if (configurationM.inputDirectory) {
        directoryM.emplace(*configurationM.inputDirectory, configurationM.registeredName, logM);
    }
}

void PipelineRunner::run(Notification const& stop) {
    try {
        if (streamM != nullptr) {
            runStream(stop);
        } else if (directoryM) {
            runDirectory(stop);
        } else {
            runFiles(stop);
        }
    } catch (...) {
        hasFailedM = true;
        report(
            makeStatus(BAS::Status::critical, {}, "ERR_PIPELINE_FAILED", {currentExceptionText()}));
    }
}

PipelineCounters PipelineRunner::counters() const {
    std::lock_guard const guard(countersLockM);
    return countersM;
}

PipelineState PipelineRunner::state() const {
    std::lock_guard const guard(countersLockM);
    PipelineState state{countersM,
                        fileM,
                        byteM,
                        std::nullopt,
                        detailsByValueM.values(),
                        detailsByValueM.others(),
                        streamM == nullptr ? std::vector<PartitionState>() : streamM->state()};
    if (countersM.batches > 0) {
        state.lastBatch = lastBatchM;
    }
    return state;
}

std::optional<BatchAtHand> PipelineRunner::batchAtHand() const noexcept {
    using Clock = std::chrono::steady_clock;
    // In this order: it is written the other way round, and never belongs to an earlier batch.
    auto const* const function = functionAtHandM.load();
    Clock::time_point const since{Clock::duration(functionSinceM.load())};
    return function == nullptr ? std::nullopt : std::optional(BatchAtHand{function, since});
}

void PipelineRunner::reopenLog() {
    if (ownLogM != nullptr) {
        ownLogM->reopen();
    }
}

void PipelineRunner::countCommand() {
    std::lock_guard const guard(countersLockM);
    ++countersM.commands;
}

bool PipelineRunner::hasFailed() const noexcept {
    return hasFailedM || (directoryM && directoryM->hasFailed()) ||
           (ownLogM != nullptr && ownLogM->hasFailed());
}

void PipelineRunner::runFiles(Notification const& stop) {
    for (auto const& input : configurationM.inputs) {
        if (stop.isSet()) {
            return;
        }
        auto const outcome = runInput({input, {}}, stop);
        if (outcome.ending == Ending::notOpened || outcome.ending == Ending::failed) {
            hasFailedM = true;
            report(outcome.reason);
            countFailedInputs(counters().failedInputs + 1);
        }
    }
}

void PipelineRunner::runDirectory(Notification const& stop) {
    while (auto const input = directoryM->next(stop)) {
        auto const outcome = runInput(*input, stop);
        switch (outcome.ending) {
        case Ending::atEnd:
            directoryM->finish();
            break;
        case Ending::notOpened:
            directoryM->passBy(outcome.reason);
            break;
        case Ending::failed:
            directoryM->giveUp(outcome.reason);
            break;
        case Ending::stopped:
        case Ending::lost: // no part of a directory is
            break;         // goes on there after a restart
        }
        countFailedInputs(directoryM->failedFiles());
    }
    countFailedInputs(directoryM->failedFiles());
}

void PipelineRunner::runStream(Notification const& stop) {
    auto outcome = runStreamOnce(stop);
    while (outcome.ending == Ending::lost && !stop.isSet()) {
        report(makeStatus(BAS::Status::warning, {}, "ERR_PARTITION_LOST",
                          {configurationM.stream->name}));
        outcome = runStreamOnce(stop);
    }
    if (outcome.ending == Ending::failed) {
        hasFailedM = true;
        report(outcome.reason);
        std::lock_guard const guard(countersLockM);
        ++countersM.failedInputs;
    }
    std::unique_ptr<StreamInput> ended; // gives its partitions up, which may take a second
    std::lock_guard const guard(countersLockM);
    ended.swap(streamM);
}

PipelineRunner::InputOutcome PipelineRunner::runStreamOnce(Notification const& stop) {
    InputOutcome outcome{Ending::failed, {}};
    std::optional<ReadAheadInput> edrs;
    auto const begin = std::chrono::steady_clock::now();
    try {
        auto source = streamM->open(stop);
        if (source == nullptr) {
            return {Ending::stopped, {}};
        }
        edrs.emplace(std::move(source), *streamM, logM, portionsM);
        outcome.ending = readToEnd(*edrs, *streamM, stop);
    } catch (InputStopped const&) {
        outcome.ending = Ending::stopped;
    } catch (BAS::Status const& status) {
        outcome.reason = status;
    }
    if (edrs) {
        if (outcome.ending != Ending::lost) {
            processBatch(*edrs, *streamM);
        }
        batchM.clear();
        rejectedBeforeM += edrs->rejectedLines();
        bytesBeforeM += edrs->bytesRead();
    }
    std::lock_guard const guard(countersLockM);
    countersM.seconds +=
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    return outcome;
}

// What was read before a failure is still processed.
PipelineRunner::InputOutcome PipelineRunner::runInput(DirectoryInput const& input,
                                                      Notification const& stop) {
    report(makeStatus(BAS::Status::info, {}, "MSG_INPUT_STARTED", {input.input.file.string()}));
    setInput(input.input.file.string());
    auto const begin = std::chrono::steady_clock::now();
    InputOutcome outcome{Ending::notOpened, {}};
    std::optional<FileProgress> progress;
    std::optional<ReadAheadInput> edrs;
    try {
        auto reader = std::make_unique<PortionReader>(input.input, configurationM, parserM, &stop,
                                                      input.start.bytes);
        progress.emplace(input, directoryM ? &*directoryM : nullptr);
        edrs.emplace(std::move(reader), *progress, logM, portionsM);
        outcome.ending = readToEnd(*edrs, *progress, stop);
    } catch (InputStopped const&) {
        outcome.ending = Ending::stopped;
    } catch (BAS::Status const& status) {
        outcome = {edrs ? Ending::failed : Ending::notOpened, status};
    }
    if (edrs) {
        processBatch(*edrs, *progress);
        rejectedBeforeM += edrs->rejectedLines();
        bytesBeforeM += edrs->bytesRead();
    }
    setInput({});
    std::lock_guard const guard(countersLockM);
    countersM.seconds +=
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    return outcome;
}

PipelineRunner::Ending PipelineRunner::readToEnd(ReadAheadInput& edrs, InputProgress& progress,
                                                 Notification const& stop) {
    for (;;) {
        auto* const container = &nextContainer();
        auto const next = edrs.next(*container);
        if (next == ReadAheadInput::Next::end) {
            return Ending::atEnd;
        }
        if (next == ReadAheadInput::Next::edr) {
            batchM.append(container);
        }
        // What waits for more EDRs isn't held back.
        if (next == ReadAheadInput::Next::pause || batchM.entries() == configurationM.batchSize) {
            if (!processBatch(edrs, progress)) {
                return Ending::lost;
            }
            if (stop.isSet()) {
                return Ending::stopped;
            }
        }
    }
}

EDR::Container& PipelineRunner::nextContainer() {
    auto const place = batchM.entries();
    if (place == poolM.size()) {
        poolM.push_back(std::make_unique<EDR::Container>(descriptionM));
    }
    return *poolM[place];
}

// False when it may not be processed: another host may have done so.
bool PipelineRunner::processBatch(ReadAheadInput const& edrs, InputProgress& progress) {
    std::uint64_t faults = 0;
    {
        std::unique_lock turn(lockM, std::defer_lock);
        if (batchM.entries() > 0) {
            turn.lock(); // a command may be carried out for long
        }
        if (!progress.mayProcess()) {
            return false;
        }
        faults = batchM.entries() == 0 ? 0 : callFunctions();
    }
    countBatch(edrs, faults);
    batchM.clear();
    progress.keep(edrs.places());
    return true;
}

// Returns how many of them threw. The caller has the lock.
std::uint64_t PipelineRunner::callFunctions() {
    std::uint64_t faults = 0;
    for (auto* const function : functionsM) {
        functionSinceM = std::chrono::steady_clock::now().time_since_epoch().count();
        functionAtHandM = function;
        faults += call(*function) ? 0 : 1;
    }
    functionAtHandM = nullptr;
    return faults;
}

bool PipelineRunner::call(PLG::FunctionPlugIn& function) {
    try {
        if (function.isActive()) {
            function.processEdrContainer(batchM);
        }
        return true;
    } catch (...) {
        logM.write(makeStatus(BAS::Status::critical, function.name(), "ERR_BATCH_FAILED",
                              {currentExceptionText()}));
        return false;
    }
}

void PipelineRunner::countBatch(ReadAheadInput const& edrs, std::uint64_t faults) {
    std::lock_guard const guard(countersLockM);
    for (std::size_t i = 0; i < batchM.entries(); ++i) {
        if (batchM[i]->recordKind() == EDR::detailRecord) {
            ++countersM.details;
            if (countedFieldM) {
                detailsByValueM.count(batchM[i]->getString(*countedFieldM).view());
            }
        }
    }
    if (batchM.entries() > 0) {
        lastBatchM = std::chrono::steady_clock::now();
    }
    byteM = edrs.places().empty() ? byteM : edrs.places().front().offset;
    countersM.read += batchM.entries();
    countersM.batches += batchM.entries() == 0 ? 0 : 1;
    countersM.faults += faults;
    countersM.rejected = rejectedBeforeM + edrs.rejectedLines();
    countersM.bytes = bytesBeforeM + edrs.bytesRead();
}

void PipelineRunner::countFailedInputs(std::uint64_t number) {
    std::lock_guard const guard(countersLockM);
    countersM.failedInputs = number;
}

void PipelineRunner::setInput(std::string file) {
    std::lock_guard const guard(countersLockM);
    fileM = std::move(file);
    byteM = 0;
}

void PipelineRunner::report(BAS::Status status) {
    status.setObjectName(configurationM.registeredName);
    logM.write(status);
}

} // namespace host
