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
#include "PLG/Pipeline.h"
#include "RW/RWTPtrOrderedVector.h"
#include "base/FairLock.h"
#include "base/LogFile.h"
#include "input/InputDirectory.h"
#include "input/InputPortion.h"
#include "registry/Registry.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
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

class PipelineRunner {
public:
    // Opens the log and reads the EDR description. Throws a StartFailure or a BAS::Status when that
    // isn't possible. The configuration must outlive the runner.
    PipelineRunner(PipelineConfiguration const& configuration, BAS::LogSink& processLog,
                   BAS::Status::Severity leastSeverity);

    // The pipeline as plug-ins find it, which the caller owns.
    std::unique_ptr<BAS::RegisteredObject> makeRegisteredObject() const;
    // In the order in which the functions process a batch.
    void addFunction(PLG::FunctionPlugIn& function) { functionsM.push_back(&function); }

    // Takes the input directory, if there is one, for this host alone. Throws a BAS::Status when
    // another one has it.
    void openInputDirectory();

    // Returns when all inputs have ended, or, once stop is set, when the batch in progress is
    // processed. Throws nothing: what fails is logged.
    void run(Notification const& stop);

    PipelineConfiguration const& configuration() const noexcept { return configurationM; }
    FairLock& lock() noexcept { return lockM; }
    void countCommand();

    // As of the last batch. Any thread.
    PipelineCounters counters() const;
    // An input, a reject file, the log or a state failed.
    bool hasFailed() const noexcept;

private:
    enum class Ending { atEnd, stopped, notOpened, failed };
    struct InputOutcome {
        Ending ending;
        BAS::Status reason; // why it wasn't opened or failed
    };

    void runFiles(Notification const& stop);
    void runDirectory(Notification const& stop);
    InputOutcome runInput(DirectoryInput const& input, Notification const& stop);
    Ending readToEnd(ReadAheadInput& edrs, InputProgress& progress, Notification const& stop);
    EDR::Container& nextContainer();
    void processBatch(ReadAheadInput const& edrs, InputProgress& progress);
    std::uint64_t callFunctions();
    bool call(PLG::FunctionPlugIn& function);
    void countBatch(ReadAheadInput const& edrs, std::uint64_t faults);
    void report(BAS::Status status);

    PipelineConfiguration const& configurationM;
    std::unique_ptr<LogFile> ownLogM;
    BAS::LogSink& logM;
    EDR::Description descriptionM;
    EDR::Factory factoryM;
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
};

} // namespace host
