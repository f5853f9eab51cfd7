#include "input/ReadAheadInput.h"

#include "BAS/LogSink.h"

#include <utility>

namespace host {

ReadAheadInput::ReadAheadInput(InputConfiguration const& input,
                               PipelineConfiguration const& pipeline,
                               EDR::Description const& description, BAS::LogSink& log,
                               InputPortions& portions, Notification const* stop,
                               InputPosition const& start)
    : logM(log), readerM(input, pipeline, description, {stop, &abandonedM}, start.bytes),
      rejectFileM(input.rejectFile, start.rejectedBytes), offsetM(start.bytes),
      emptyM(portions.size()), filledM(portions.size()) {
    for (auto& portion : portions) {
        emptyM.put(&portion);
    }
    readAheadM = std::jthread([this] { readAhead(); });
}

ReadAheadInput::~ReadAheadInput() {
    abandonedM.set();
    emptyM.close();
}

// The reader's thread.
void ReadAheadInput::readAhead() {
    while (auto const portion = emptyM.take()) {
        readerM.read(**portion);
        bool const isLast = (*portion)->isLast; // give makes it the pipeline's
        filledM.put(*portion);
        if (isLast) {
            return;
        }
    }
}

bool ReadAheadInput::next(EDR::Container& container) {
    while (portionM == nullptr || takenM == portionM->edrs.count()) {
        if (!nextPortion()) {
            return false;
        }
    }
    portionM->edrs.fill(container, takenM);
    offsetM = portionM->edrs.endOf(takenM);
    ++takenM;
    return true;
}

bool ReadAheadInput::nextPortion() {
    if (portionM != nullptr) {
        finishPortion();
        if (portionM->isLast) {
            return false;
        }
        emptyM.put(portionM);
    }
    portionM = *filledM.take();
    takenM = 0;
    bytesReadM = portionM->bytesRead;
    return true;
}

// Handles what comes after its EDRs.
void ReadAheadInput::finishPortion() {
    offsetM = portionM->end;
    rejectedLinesM = portionM->rejectedLines;
    if (!portionM->rejected.empty()) {
        rejectFileM.append(portionM->rejected);
        portionM->rejected = {}; // frees the memory: it may be huge
    }
    for (auto const& message : portionM->messages) {
        logM.write(message);
    }
    portionM->messages.clear();
    if (portionM->failure != nullptr) {
        std::rethrow_exception(std::exchange(portionM->failure, nullptr));
    }
}

} // namespace host
