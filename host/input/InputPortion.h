// A part of an input on its way from the thread that reads it to the pipeline's: EDRs, and what was
// wrong behind the last of them. Whoever has it at the time may use it.
#pragma once

#include "BAS/Status.h"
#include "input/ParsedEdrs.h"

#include <array>
#include <cstdint>
#include <exception>
#include <string>
#include <vector>

namespace host {

struct InputPortion {
    ParsedEdrs edrs;
    std::string rejected; // a line, or a piece of a long one, as it was read
    std::vector<BAS::Status> messages;
    // Where the input stands behind all of that.
    std::uint64_t end = 0;           // in bytes of the input
    std::uint64_t bytesRead = 0;     // of the file, compressed as they may be
    std::uint64_t rejectedLines = 0; // since the start
    bool isLast = false;
    std::exception_ptr failure; // why it is the last, unless the input is at its end
};

// One for the pipeline, one for the reader and one on its way.
using InputPortions = std::array<InputPortion, 3>;

} // namespace host
