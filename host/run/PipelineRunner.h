// Runs one pipeline: reads its inputs in order, gathers EDRs in batches and passes each batch to
// the functions in order. It owns what its plug-ins reach through their pipeline (description,
// factory and log), so it must outlive them; the plug-ins stay the host's.
//
// run is the body of the pipeline's thread. Commands for the pipeline's objects hold its lock, as
// each batch does; the lock is fair, so that commands and batches take turns.
#pragma once

#include "EDR/Container.h"
#include "EDR/Description.h"
#include "EDR/Factory.h"
#include "EDR/Index.h"
#include "PLG/Pipeline.h"
#include "RW/RWTPtrOrderedVector.h"
#include "base/FairLock.h"
#include "base/LogFile.h"
#include "input/EdrLineParser.h"
#include "input/InputDirectory.h"
#include "input/InputPortion.h"
#include "input/StreamLibrary.h"
#include "registry/Registry.h"
#include "run/ValueCounter.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace PLG {
class FunctionPlugIn;
}

namespace host {

class InputProgress;
class ReadAheadInput;

struct PipelineCounters {
    std::uint64_t read = 0; // EDRs of all kinds, without rejected lines
    std::uint64_t details = 0;
    std::uint64_t rejected = 0; // lines
    std::uint64_t batches = 0;
    std::uint64_t faults = 0; // exceptions that left a plug-in
    std::uint64_t failedInputs = 0;
    std::uint64_t commands = 0;
    std::uint64_t bytes = 0; // of the input files, compressed as they may be
    double seconds = 0;      // without waiting for files
};

// Where a pipeline stands, as others see it.
struct PipelineState {
    PipelineCounters counters;
    // The input at hand: its file, empty between inputs, and the bytes of its text that are
    // processed.
    std::string file;
    std::uint64_t byte = 0;
    std::optional<std::chrono::steady_clock::time_point> lastBatch;
    // Details by the values of the field that the configuration names, and those of further values.
    std::map<std::string, std::uint64_t> detailsByValue;
    std::uint64_t otherDetails = 0;
    std::vector<PartitionState> partitions; // of a stream, until it has ended
};

// A batch within a plug-in.
struct BatchAtHand {
    PLG::FunctionPlugIn const* function;
    std::chrono::steady_clock::time_point since;
};

class PipelineRunner {
public:
    // Opens the log and reads the EDR description, which must have the field to count by. Throws a
    // StartFailure or a BAS::Status when that isn't possible. The configuration must outlive the
    // runner.
    PipelineRunner(PipelineConfiguration const& configuration, BAS::LogSink& processLog,
                   BAS::Status::Severity leastSeverity);
    // The pipeline as plug-ins find it, which the caller owns.
    std::unique_ptr<BAS::RegisteredObject> makeRegisteredObject() const;
    // In the order in which the functions process a batch.
    void addFunction(PLG::FunctionPlugIn& function) { functionsM.push_back(&function); }

    // Reads from a stream of the library, which must outlive the runner. Throws a BAS::Status when
    // that isn't possible.
    void openStream(StreamLibrary& library);
    // Takes the input directory, if there is one, for this host alone. Throws a BAS::Status when
    // another one has it.
    void openInputDirectory();

    // Returns when all inputs have ended, or, once stop is set, when the batch in progress is
    // processed. Throws nothing: what fails is logged.
    void run(Notification const& stop);

    PipelineConfiguration const& configuration() const noexcept { return configurationM; }
    EDR::Description const& description() const noexcept { return descriptionM; }
    // For the plug-ins that start from now on; see EDR::Factory.
    void collectMissing(std::vector<BAS::Status>* missing) noexcept {
        factoryM.collectMissing(missing);
    }
    FairLock& lock() noexcept { return lockM; }
    void countCommand();

    // As of the last batch. Any thread.
    PipelineCounters counters() const;
    PipelineState state() const;
    // Any thread, without waiting for anything.
    std::optional<BatchAtHand> batchAtHand() const noexcept;
    // Opens the pipeline's log again, if it has one of its own. Any thread.
    void reopenLog();
    // An input, a reject file, the log or a state failed.
    bool hasFailed() const noexcept;

private:
    enum class Ending { atEnd, stopped, notOpened, failed, lost };
    struct InputOutcome {
        Ending ending;
        BAS::Status reason; // why it wasn't opened or failed
    };

    void runFiles(Notification const& stop);
    void runDirectory(Notification const& stop);
    void runStream(Notification const& stop);
    InputOutcome runInput(DirectoryInput const& input, Notification const& stop);
    Ending readToEnd(ReadAheadInput& edrs, InputProgress& progress, Notification const& stop);
    EDR::Container& nextContainer();
    InputOutcome runStreamOnce(Notification const& stop);
    bool processBatch(ReadAheadInput const& edrs, InputProgress& progress);
    std::uint64_t callFunctions();
    bool call(PLG::FunctionPlugIn& function);
    void countBatch(ReadAheadInput const& edrs, std::uint64_t faults);
    void countFailedInputs(std::uint64_t number);
    void setInput(std::string file);
    void report(BAS::Status status);

    PipelineConfiguration const& configurationM;
    std::unique_ptr<LogFile> ownLogM;
    BAS::LogSink& logM;
    EDR::Description descriptionM;
    EDR::Factory factoryM;
    EdrLineParser parserM; // of the files
    std::optional<InputDirectory> directoryM;
    std::vector<PLG::FunctionPlugIn*> functionsM;
    FairLock lockM;
    InputPortions portionsM;                            // of the input, reused
    std::vector<std::unique_ptr<EDR::Container>> poolM; // one for each place in a batch
    RWTPtrOrderedVector<EDR::Container> batchM;
    mutable std::mutex countersLockM;
    PipelineCounters countersM;
    // In the inputs before the present one.
    std::uint64_t rejectedBeforeM = 0;
    std::uint64_t bytesBeforeM = 0;
    std::atomic<bool> hasFailedM{false};
    std::optional<EDR::Index> countedFieldM;
    ValueCounter detailsByValueM;                     // guarded by the counters' lock
    std::string fileM;                                // guarded by the counters' lock
    std::uint64_t byteM = 0;                          // guarded by the counters' lock
    std::chrono::steady_clock::time_point lastBatchM; // guarded by the counters' lock
    std::unique_ptr<StreamInput> streamM; // ended by the pipeline's thread, with that lock
    // The plug-in that has the batch, or null; and since when, in ticks of the steady clock.
    std::atomic<PLG::FunctionPlugIn const*> functionAtHandM{nullptr};
    std::atomic<std::chrono::steady_clock::rep> functionSinceM{0};
};

} // namespace host
