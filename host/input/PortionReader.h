// Reads an input and parses it into portions. A portion ends before the reader would have to read
// on, with a line that can't be taken or has fields that the EDR description doesn't know, and with
// the input: so nobody waits for what comes later. Used by one thread at a time.
#pragma once

#include "BAS/String.h"
#include "input/EdrLineParser.h"
#include "input/InputFile.h"
#include "input/InputPortion.h"
#include "input/LineReader.h"
#include "registry/Registry.h"

#include <cstdint>

namespace host {

class PortionReader {
public:
    // Opens the input and goes on behind so many bytes of it. The pipeline, the description
    // and the notifications must outlive the reader; the notifications end the waiting for bytes,
    // as InputFile has it. Throws a BAS::Status when the file fails.
    PortionReader(InputConfiguration const& input, PipelineConfiguration const& pipeline,
                  EDR::Description const& description, InputFile::Ends ends, std::uint64_t start);

    // Makes the portion the next one of the input. What fails is left in the portion, behind what
    // was read before.
    void read(InputPortion& portion) noexcept;

private:
    bool isComplete(InputPortion const& portion) const;
    void readOn(InputPortion& portion);
    void takeLine(InputPortion& portion);
    void reject(InputPortion& portion, std::string const& reason,
                std::optional<std::size_t> column = std::nullopt);
    void reportUnknownFields(InputPortion& portion);

    InputConfiguration inputM;
    PipelineConfiguration const& pipelineM;
    InputFile fileM;
    LineReader linesM;
    EdrLineParser parserM;
    std::uint64_t rejectedLinesM = 0;
    std::size_t unknownFieldsM = 0;
};

} // namespace host
