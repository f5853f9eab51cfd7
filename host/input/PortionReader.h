// Reads an input and parses it into portions. A portion ends before the reader would have to wait
// for more bytes, after a rejected line or one with unknown fields, and with the input: so the
// pipeline gets everything at once. Used by one thread at a time.
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
    // Opens the input and skips its first bytes up to the start. The pipeline, the description and
    // the notifications of InputFile must outlive the reader. Throws a BAS::Status when the file
    // fails.
    PortionReader(InputConfiguration const& input, PipelineConfiguration const& pipeline,
                  EDR::Description const& description, InputFile::Ends ends, std::uint64_t start);

    // Fills the next portion. A failure is put into the portion, after what was read before.
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
