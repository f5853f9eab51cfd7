// An input file as a pipeline reads it.
#pragma once

#include "input/FileProgress.h"
#include "input/PortionReader.h"
#include "input/ReadAheadInput.h"

namespace support {

class FileInput {
public:
    FileInput(host::InputConfiguration const& file, host::PipelineConfiguration const& pipeline,
              EDR::Description const& description, BAS::LogSink& log, host::InputPortions& portions,
              host::InputPosition const& start = {})
        : startM(start.bytes), parserM(description), progressM({file, start}, nullptr),
          edrsM(
              std::make_unique<host::PortionReader>(file, pipeline, parserM, nullptr, start.bytes),
              progressM, log, portions) {}

    // Waits for the next EDR; false at the end.
    bool next(EDR::Container& container) {
        auto next = edrsM.next(container);
        while (next == host::ReadAheadInput::Next::pause) {
            next = edrsM.next(container);
        }
        return next == host::ReadAheadInput::Next::edr;
    }

    host::InputPosition position() const {
        return {edrsM.places().empty() ? startM : edrsM.places().front().offset,
                progressM.rejectedBytes()};
    }
    std::uint64_t rejectedLines() const { return edrsM.rejectedLines(); }

private:
    std::uint64_t startM;
    host::EdrLineParser parserM;
    host::FileProgress progressM;
    host::ReadAheadInput edrsM;
};

} // namespace support
