// One pipeline at work: reads its inputs in order, gathers EDRs in batches and hands each batch to
// the functions in order. It owns what its plug-ins reach through their pipeline (description,
// factory and log), so it must outlive them; the plug-ins stay the host's.
//
// run is the body of the pipeline's thread. Commands for the pipeline's objects hold its lock, as
// each batch does.
#pragma once

#include "EDR/Container.h"
#include "EDR/Description.h"
#include "EDR/Factory.h"
#include "LogFile.h"
#include "PLG/Pipeline.h"
#include "RW/RWTPtrOrderedVector.h"
#include "Registry.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace PLG {
class FunctionPlugIn;
}

namespace host {

struct PipelineCounters {
    std::uint64_t read = 0; // EDRs of all kinds, without rejected lines
    std::uint64_t details = 0;
    std::uint64_t rejected = 0; // lines
    std::uint64_t batches = 0;
    std::uint64_t faults = 0; // exceptions that left a plug-in
    double seconds = 0;
};

class PipelineRunner {
public:
    // Opens the log and reads the EDR description. Throws a StartFailure or a BAS::Status when that
    // isn't possible. The configuration must outlive the runner.
    PipelineRunner(PipelineConfiguration const& configuration, BAS::LogSink& processLog);

    // The pipeline as plug-ins find it, which the caller owns.
    std::unique_ptr<BAS::RegisteredObject> makeRegisteredObject() const;
    // In the order in which the functions process a batch.
    void addFunction(PLG::FunctionPlugIn& function) { functionsM.push_back(&function); }

    // Returns when all inputs have ended. Throws nothing: what fails is logged.
    void run();

    PipelineConfiguration const& configuration() const noexcept { return configurationM; }
    std::mutex& lock() noexcept { return lockM; }

    // Once run has returned:
    PipelineCounters const& counters() const noexcept { return countersM; }
    // An input, a reject file or the log failed.
    bool hasFailed() const noexcept;

private:
    void runInput(InputConfiguration const& input);
    EDR::Container& nextContainer();
    void addToBatch(EDR::Container& container);
    void processBatch();
    void processBatch(PLG::FunctionPlugIn& function);

    PipelineConfiguration const& configurationM;
    std::unique_ptr<LogFile> ownLogM;
    BAS::LogSink& logM;
    EDR::Description descriptionM;
    EDR::Factory factoryM;
    std::vector<PLG::FunctionPlugIn*> functionsM;
    std::mutex lockM;
    std::vector<std::unique_ptr<EDR::Container>> poolM; // one for each place in a batch
    RWTPtrOrderedVector<EDR::Container> batchM;
    PipelineCounters countersM;
    bool hasFailedM = false;
};

} // namespace host
