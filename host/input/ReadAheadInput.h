// One input of a pipeline as a sequence of EDRs, which a thread of its own reads and parses ahead
// of the pipeline. A line that can't be parsed is logged, kept in the input's reject file and
// counted when the pipeline reaches it, as if it was only read then; the EDRs continue after it.
// Unknown fields are logged once for each name. Used by the pipeline's thread.
#pragma once

#include "base/HandOverQueue.h"
#include "base/Notification.h"
#include "input/InputPortion.h"
#include "input/InputStateFile.h"
#include "input/PortionReader.h"
#include "input/RejectFile.h"
#include "registry/Registry.h"

#include <cstdint>
#include <thread>

namespace BAS {
class LogSink;
}

namespace host {

class ReadAheadInput {
public:
    // Opens the input and resumes after the start. Statuses have the pipeline's registered name and
    // go to the log. All arguments except the names of the files must outlive the object; one input
    // uses the portions at a time. Throws a BAS::Status when a file fails.
    ReadAheadInput(InputConfiguration const& input, PipelineConfiguration const& pipeline,
                   EDR::Description const& description, BAS::LogSink& log, InputPortions& portions,
                   Notification const* stop = nullptr, InputPosition const& start = {});
    // Drops what was read ahead.
    ~ReadAheadInput();
    ReadAheadInput(ReadAheadInput const&) = delete;
    ReadAheadInput& operator=(ReadAheadInput const&) = delete;

    // Fills the container with the next EDR; false at the end of the input. Throws a BAS::Status
    // when reading or writing the reject file fails, and InputStopped when stop is set while the
    // input has nothing to read.
    bool next(EDR::Container& container);

    // After the last EDR and everything that was rejected before it.
    InputPosition position() const noexcept { return {offsetM, rejectFileM.size()}; }
    // Up to there or a little more; of the file, before decompression.
    std::uint64_t bytesRead() const noexcept { return bytesReadM; }
    std::uint64_t rejectedLines() const noexcept { return rejectedLinesM; }

private:
    void readAhead();
    bool nextPortion();
    void finishPortion();

    BAS::LogSink& logM;
    Notification abandonedM; // ends the reader's waiting for bytes
    PortionReader readerM;
    RejectFile rejectFileM;
    InputPortion* portionM = nullptr; // the present one
    std::size_t takenM = 0;           // EDRs of it
    std::uint64_t offsetM;
    std::uint64_t bytesReadM = 0;
    std::uint64_t rejectedLinesM = 0;
    HandOverQueue<InputPortion*> emptyM;
    HandOverQueue<InputPortion*> filledM;
    std::jthread readAheadM;
};

} // namespace host
