// One line on the terminal that shows how far all pipelines have come, drawn again and again in its
// place. Used by one thread.
#pragma once

#include "base/Poll.h"
#include "run/PipelineRunner.h"

#include <memory>
#include <vector>

namespace host {

class ProgressLine {
public:
    // The pipelines stay the caller's. The line goes to standard error.
    explicit ProgressLine(std::vector<std::unique_ptr<PipelineRunner>> const& pipelines);

    // Draws the line if it is time to, and returns when it is time again.
    std::chrono::steady_clock::time_point draw();
    void clear() const;

private:
    std::string text(std::chrono::steady_clock::time_point now);

    std::vector<std::unique_ptr<PipelineRunner>> const& pipelinesM;
    std::uint64_t totalBytesM; // of all inputs; 0 when that can't be known
    std::chrono::steady_clock::time_point nextM;
    std::chrono::steady_clock::time_point lastM;
    std::uint64_t readBeforeM = 0;
};

} // namespace host
