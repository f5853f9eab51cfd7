// A part of an input that the reading thread passes to the pipeline's: EDRs, and the problem after
// the last of them. Only the thread that has it may use it.
#pragma once

#include "BAS/Status.h"
#include "input/InputPlace.h"
#include "input/ParsedEdrs.h"

#include <array>
#include <cstdint>
#include <exception>
#include <string>
#include <vector>

namespace host {

struct InputPortion {
    // Keeps the storage for EDRs.
    void clear() {
        edrs.clear();
        rejected.clear();
        messages.clear();
        isPause = false;
        isLast = false;
        failure = nullptr;
    }

    ParsedEdrs edrs;
    std::string rejected; // a line, or a piece of a long one, as it was read
    std::vector<BAS::Status> messages;
    // Where the input stands after all of that.
    InputPlace end;
    std::uint64_t bytesRead = 0;     // of the input, before decompression
    std::uint64_t rejectedLines = 0; // since the start
    bool isPause = false;            // what follows isn't there yet
    bool isLast = false;
    std::exception_ptr failure; // that ended the input early
};

// One for the pipeline, one for the reader, and in the queue enough to go on with while either
// thread is held up for some milliseconds.
using InputPortions = std::array<InputPortion, 8>;

} // namespace host
