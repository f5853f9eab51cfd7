#include "PipelineRunner.h"

#include "EdrDescriptionFile.h"
#include "EdrInput.h"
#include "ExceptionText.h"
#include "MessageCatalogue.h"
#include "PLG/FunctionPlugIn.h"

#include <chrono>

namespace host {

PipelineRunner::PipelineRunner(PipelineConfiguration const& configuration, BAS::LogSink& processLog)
    : configurationM(configuration),
      ownLogM(configuration.log ? std::make_unique<LogFile>(*configuration.log) : nullptr),
      logM(ownLogM == nullptr ? processLog : *ownLogM),
      descriptionM(readEdrDescription(configuration.edrDescription)), factoryM(descriptionM) {
}

std::unique_ptr<BAS::RegisteredObject> PipelineRunner::makeRegisteredObject() const {
    return std::make_unique<PLG::Pipeline>(configurationM.registeredName, factoryM, logM);
}

void PipelineRunner::run() {
    auto const begin = std::chrono::steady_clock::now();
    try {
        for (auto const& input : configurationM.inputs) {
            runInput(input);
        }
    } catch (...) {
        hasFailedM = true;
        logM.write(makeStatus(BAS::Status::critical, configurationM.registeredName,
                              "ERR_PIPELINE_FAILED", {currentExceptionText()}));
    }
    countersM.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

bool PipelineRunner::hasFailed() const noexcept {
    return hasFailedM || (ownLogM != nullptr && ownLogM->hasFailed());
}

void PipelineRunner::runInput(InputConfiguration const& input) {
    logM.write(makeStatus(BAS::Status::info, configurationM.registeredName, "MSG_INPUT_STARTED",
                          {input.file.string()}));
    std::optional<EdrInput> edrs;
    try {
        edrs.emplace(input, configurationM, descriptionM, logM);
        for (auto* next = &nextContainer(); edrs->next(*next); next = &nextContainer()) {
            addToBatch(*next);
        }
    } catch (BAS::Status& status) {
        hasFailedM = true;
        status.setObjectName(configurationM.registeredName);
        logM.write(status);
    }
    countersM.rejected += edrs ? edrs->rejectedLines() : 0;
    processBatch();
}

EDR::Container& PipelineRunner::nextContainer() {
    auto const place = batchM.entries();
    if (place == poolM.size()) {
        poolM.push_back(std::make_unique<EDR::Container>(descriptionM));
    }
    return *poolM[place];
}

void PipelineRunner::addToBatch(EDR::Container& container) {
    batchM.append(&container);
    ++countersM.read;
    countersM.details += container.recordKind() == EDR::detailRecord ? 1 : 0;
    if (batchM.entries() == configurationM.batchSize) {
        processBatch();
    }
}

void PipelineRunner::processBatch() {
    if (batchM.entries() == 0) {
        return;
    }
    {
        std::lock_guard const guard(lockM);
        for (auto* const function : functionsM) {
            processBatch(*function);
        }
    }
    ++countersM.batches;
    batchM.clear();
}

void PipelineRunner::processBatch(PLG::FunctionPlugIn& function) {
    try {
        if (function.isActive()) {
            function.processEdrContainer(batchM);
        }
    } catch (...) {
        ++countersM.faults;
        logM.write(makeStatus(BAS::Status::critical, function.name(), "ERR_BATCH_FAILED",
                              {currentExceptionText()}));
    }
}

} // namespace host
