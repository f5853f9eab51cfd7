#include "run/ProgressLine.h"

#include "base/Terminal.h"

#include <fmt/format.h>
#include <sys/ioctl.h>

namespace host {

namespace {

constexpr std::chrono::milliseconds interval(500);

std::uint64_t sizeOfInputs(std::vector<std::unique_ptr<PipelineRunner>> const& pipelines) {
    std::uint64_t total = 0;
    for (auto const& pipeline : pipelines) {
        if (pipeline->configuration().inputDirectory) {
            return 0;
        }
        for (auto const& input : pipeline->configuration().inputs) {
            std::error_code error;
            if (!std::filesystem::is_regular_file(input.file, error)) {
                return 0;
            }
            total += std::filesystem::file_size(input.file, error);
        }
    }
    return total;
}

// The terminal's present width; a longer line would wrap and couldn't be erased.
std::size_t longestLine() {
    winsize size = {};
    bool const isKnown = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return isKnown ? size.ws_col - std::size_t{1} : std::string::npos;
}

} // namespace

ProgressLine::ProgressLine(std::vector<std::unique_ptr<PipelineRunner>> const& pipelines)
    : pipelinesM(pipelines), totalBytesM(sizeOfInputs(pipelines)),
      nextM(std::chrono::steady_clock::now() + interval), lastM(std::chrono::steady_clock::now()) {
}

std::chrono::steady_clock::time_point ProgressLine::draw() {
    auto const now = std::chrono::steady_clock::now();
    if (now >= nextM) {
        static_cast<void>(
            writeAll(STDERR_FILENO, eraseTerminalLine + text(now).substr(0, longestLine())));
        nextM = now + interval;
    }
    return nextM;
}

void ProgressLine::clear() const {
    static_cast<void>(writeAll(STDERR_FILENO, eraseTerminalLine));
}

std::string ProgressLine::text(std::chrono::steady_clock::time_point now) {
    PipelineCounters sum;
    for (auto const& pipeline : pipelinesM) {
        auto const counters = pipeline->counters();
        sum.read += counters.read;
        sum.rejected += counters.rejected;
        sum.bytes += counters.bytes;
    }
    auto const seconds = std::chrono::duration<double>(now - lastM).count();
    auto const rate = static_cast<double>(sum.read - readBeforeM) / seconds;
    lastM = now;
    readBeforeM = sum.read;
    auto const share =
        totalBytesM == 0 ? std::string()
                         : fmt::format(", {} % done",
                                       std::min<std::uint64_t>(100, 100 * sum.bytes / totalBytesM));
    return fmt::format("{} EDRs, {:.0f} EDRs/s{}, {} rejected", sum.read, rate, share,
                       sum.rejected);
}

} // namespace host
