// One input of a pipeline as a sequence of EDRs, which a thread of its own reads and parses ahead
// of the pipeline. A line that can't be parsed is logged, kept and counted when the pipeline
// reaches it, as if it was only read then; the EDRs continue after it. Used by the pipeline's
// thread.
#pragma once

#include "base/HandOverQueue.h"
#include "input/EdrSource.h"
#include "input/InputProgress.h"

#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

namespace BAS {
class LogSink;
}

namespace host {

class ReadAheadInput {
public:
    // Begins to read. What is given by reference stays the caller's and must outlive the object;
    // one input uses the portions at a time.
    ReadAheadInput(std::unique_ptr<EdrSource> source, InputProgress& progress, BAS::LogSink& log,
                   InputPortions& portions);
    // Drops what was read ahead.
    ~ReadAheadInput();
    ReadAheadInput(ReadAheadInput const&) = delete;
    ReadAheadInput& operator=(ReadAheadInput const&) = delete;

    enum class Next { edr, pause, end };
    // Fills the container with the next EDR, or tells, once, that none is at hand, or that the
    // input is at its end. Throws what reading throws: a BAS::Status when that, or keeping a
    // rejected line, fails, and InputStopped when the wait for EDRs ends because the program is to
    // end.
    Next next(EDR::Container& container);

    // After the last EDR and everything that was rejected before it; one place for each partition
    // from which anything came.
    std::vector<InputPlace> const& places() const noexcept { return placesM; }
    // Up to there or a little more; of the input, before decompression.
    std::uint64_t bytesRead() const noexcept { return bytesReadM; }
    std::uint64_t rejectedLines() const noexcept { return rejectedLinesM; }

private:
    void readAhead();
    bool nextPortion();
    void finishPortion();
    void reach(InputPlace const& place);

    std::unique_ptr<EdrSource> sourceM;
    InputProgress& progressM;
    BAS::LogSink& logM;
    InputPortion* portionM = nullptr; // at hand
    std::size_t takenM = 0;           // EDRs of it
    bool isFinishedM = false;         // what comes after its EDRs is done, too
    std::vector<InputPlace> placesM;
    std::size_t placeM = 0; // of those, the one reached last
    std::uint64_t bytesReadM = 0;
    std::uint64_t rejectedLinesM = 0;
    HandOverQueue<InputPortion*> emptyM;
    HandOverQueue<InputPortion*> filledM;
    std::jthread readAheadM;
};

} // namespace host
