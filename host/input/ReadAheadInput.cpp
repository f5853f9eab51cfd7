#include "input/ReadAheadInput.h"

#include "BAS/LogSink.h"

#include <algorithm>
#include <utility>

namespace host {

ReadAheadInput::ReadAheadInput(std::unique_ptr<EdrSource> source, InputProgress& progress,
                               BAS::LogSink& log, InputPortions& portions)
    : sourceM(std::move(source)), progressM(progress), logM(log), emptyM(portions.size()),
      filledM(portions.size()) {
    for (auto& portion : portions) {
        emptyM.put(&portion);
    }
    readAheadM = std::jthread([this] { readAhead(); });
}

ReadAheadInput::~ReadAheadInput() {
    sourceM->abandon();
    emptyM.close();
}

// The reader's thread.
void ReadAheadInput::readAhead() {
    while (auto const portion = emptyM.take()) {
        sourceM->read(**portion);
        bool const isLast = (*portion)->isLast; // put makes it the pipeline's
        filledM.put(*portion);
        if (isLast) {
            return;
        }
    }
}

ReadAheadInput::Next ReadAheadInput::next(EDR::Container& container) {
    while (portionM == nullptr || takenM == portionM->edrs.count()) {
        if (portionM != nullptr && !isFinishedM) {
            finishPortion();
            if (portionM->isPause) {
                return Next::pause;
            }
        }
        if (!nextPortion()) {
            return Next::end;
        }
    }
    portionM->edrs.fill(container, takenM);
    reach(portionM->edrs.endOf(takenM));
    ++takenM;
    return Next::edr;
}

bool ReadAheadInput::nextPortion() {
    if (portionM != nullptr) {
        if (portionM->isLast) {
            return false;
        }
        emptyM.put(portionM);
    }
    portionM = *filledM.take();
    takenM = 0;
    isFinishedM = false;
    bytesReadM = portionM->bytesRead;
    return true;
}

void ReadAheadInput::reach(InputPlace const& place) {
    if (placeM == placesM.size() || placesM[placeM].partition != place.partition) {
        placeM = static_cast<std::size_t>(
            std::find_if(placesM.begin(), placesM.end(),
                         [&](auto const& each) { return each.partition == place.partition; }) -
            placesM.begin());
        if (placeM == placesM.size()) {
            placesM.push_back(place);
        }
    }
    placesM[placeM] = place;
}

// What comes after its EDRs.
void ReadAheadInput::finishPortion() {
    isFinishedM = true;
    reach(portionM->end);
    rejectedLinesM = portionM->rejectedLines;
    if (!portionM->rejected.empty()) {
        progressM.reject(portionM->end, portionM->rejected);
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
