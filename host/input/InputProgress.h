// Keeps what becomes of an input: its lines that can't be taken, and how far the pipeline has come.
// Used by the pipeline's thread.
#pragma once

#include "input/InputPlace.h"

#include <string_view>
#include <vector>

namespace host {

class InputProgress {
public:
    virtual ~InputProgress() = default;

    // Keeps a line that can't be taken, or a piece of a long one, that ends at the place. Throws a
    // BAS::Status when that isn't possible.
    virtual void reject(InputPlace const& end, std::string_view line) = 0;

    // Whether the next batch may be processed; false when part of the input has become another
    // host's, so that the pipeline must give its reading up and begin again.
    virtual bool mayProcess() = 0;

    // Everything up to the places is processed; one place for each partition from which something
    // came since the input was opened. Throws a BAS::Status when that can't be kept.
    virtual void keep(std::vector<InputPlace> const& places) = 0;
};

} // namespace host
