// One input of a pipeline as a sequence of EDRs. A line that can't be taken is logged, kept in the
// input's reject file and counted; the EDRs go on behind it. Fields that the EDR description
// doesn't know are logged once for each name. Used by the pipeline's thread.
#pragma once

#include "BAS/String.h"
#include "EdrLineParser.h"
#include "InputFile.h"
#include "InputStateFile.h"
#include "LineReader.h"
#include "Registry.h"
#include "RejectFile.h"

#include <cstdint>

namespace BAS {
class LogSink;
}

namespace host {

class EdrInput {
public:
    // Opens the input and goes on behind the start. Statuses bear the pipeline's registered name
    // and go to the log, which stays the caller's, as the description does. Throws a BAS::Status
    // when a file fails.
    EdrInput(InputConfiguration const& input, PipelineConfiguration const& pipeline,
             EDR::Description const& description, BAS::LogSink& log, Event const* stop = nullptr,
             InputPosition const& start = {});

    // Fills the container with the next EDR; false at the end of the input. Throws a BAS::Status
    // when reading, or writing the reject file, fails, and InputStopped when stop is set while the
    // input has nothing to read.
    bool next(EDR::Container& container);

    // Behind the last EDR and everything that was rejected before it.
    InputPosition position() const noexcept { return {linesM.offset(), rejectFileM.size()}; }
    // Of the file, compressed as it may be.
    std::uint64_t bytesRead() const noexcept { return fileM.bytesRead(); }
    std::uint64_t rejectedLines() const noexcept { return rejectedLinesM; }

private:
    bool takeLine(EDR::Container& container);
    void rejectLine(std::string const& reason, std::optional<std::size_t> column = std::nullopt);
    void reportUnknownFields();

    BAS::String pipelineM;
    std::string nameM;
    std::size_t maxLineLengthM;
    BAS::LogSink& logM;
    InputFile fileM;
    LineReader linesM;
    EdrLineParser parserM;
    RejectFile rejectFileM;
    std::uint64_t rejectedLinesM = 0;
    std::size_t unknownFieldsM = 0;
};

} // namespace host
