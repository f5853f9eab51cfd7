// What a report costs, for rising numbers of events: beside it, one write of each preformatted
// line, which is what flushing every line comes down to.
#include "BAS/ProtectedBool.h"
#include "BAS/RegistryEntry.h"
#include "CaptureRun.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace {

using bench::Clock;

double seconds(Clock::time_point since) {
    return std::chrono::duration<double>(Clock::now() - since).count();
}

// What the report hands to the system at a time: a line with the empty lines before it.
std::vector<std::string_view> pieces(std::string_view report) {
    std::vector<std::string_view> result;
    while (!report.empty()) {
        auto const text = std::min(report.find_first_not_of('\n'), report.size());
        auto const end = std::min(report.find('\n', text), report.size() - 1) + 1;
        result.push_back(report.substr(0, end));
        report.remove_prefix(end);
    }
    return result;
}

double writeEach(std::vector<std::string_view> const& lines, std::string const& file) {
    auto const begin = Clock::now();
    int const descriptor = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    for (auto const line : lines) {
        if (write(descriptor, line.data(), line.size()) < 0) {
            throw std::runtime_error("cannot write " + file);
        }
    }
    close(descriptor);
    return seconds(begin);
}

double writeReport(PLG::FunctionPlugIn& plugIn, std::string const& file) {
    BAS::RegistryEntry update("update");
    update.add("DumpEvents", file);
    BAS::ProtectedBool workDone;
    auto const begin = Clock::now();
    plugIn.registryUpdate(&update, workDone);
    return seconds(begin);
}

} // namespace

int main() {
    constexpr int rounds = 5;
    fmt::print("{:>8}{:>12}{:>14}{:>18}{:>8}\n", "events", "lines", "us an event",
               "writes alone, us", "ratio");
    for (std::size_t const events : {1'000, 10'000, 100'000}) {
        support::TemporaryDirectory const directory;
        auto const file = (directory.path() / "report.txt").string();
        auto const copy = (directory.path() / "copy.txt").string();
        bench::Run run(bench::makePlugIn, {"", bench::KeyStream::distinct, events}, events);
        std::vector<double> reports;
        std::vector<double> writes;
        std::size_t lines = 0;
        for (int round = 0; round < rounds; ++round) {
            reports.push_back(writeReport(run.plugIn(), file));
            auto const text = directory.read("report.txt");
            auto const lineTexts = pieces(text);
            lines = lineTexts.size();
            writes.push_back(writeEach(lineTexts, copy));
        }
        std::nth_element(reports.begin(), reports.begin() + rounds / 2, reports.end());
        std::nth_element(writes.begin(), writes.begin() + rounds / 2, writes.end());
        auto const perEvent = 1e6 / static_cast<double>(events);
        fmt::print("{:>8}{:>12}{:>14.2f}{:>18.2f}{:>8.2f}\n", events, lines,
                   reports[rounds / 2] * perEvent, writes[rounds / 2] * perEvent,
                   reports[rounds / 2] / writes[rounds / 2]);
    }
}
