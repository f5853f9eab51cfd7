// What the capture costs: the plug-in and other ways to keep events, each as a ratio to the floor,
// that is the same host reads and number conversions with nothing kept.
//
//   capture_bench [--benchmark_filter=...]
//
// prints the benchmarks as usual for the benchmark library, then the table of ratios and the
// percentiles of single EDRs.
#include "CaptureRun.h"
#include "Floor.h"
#include "Keepers.h"
#include "Turns.h"
#include "support/AllocationCounter.h"

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace bench {

namespace {

template <class Keeper>
MakePlugIn reading() {
    return [](Host&, std::size_t capacity) {
        return std::make_unique<EventReading<Keeper>>(DataDumpTest::plugInName, capacity);
    };
}

struct Way {
    char const* name;
    MakePlugIn make;
    // Searching a list of that length would take for ever.
    std::size_t largestCapacity;
};

std::vector<Way> const ways = {
    {"floor", makeFloor, 1'000'000},
    {"plug-in", makePlugIn, 1'000'000},
    {"list and map", reading<RecordKeeper<ListAndMap>>(), 1'000},
    {"multi-index", reading<RecordKeeper<MultiIndexStore>>(), 1'000'000},
};

// Enough keys before anything is measured to fill the capacity.
std::size_t warmUpEvents(Stream const& stream) {
    return stream.capacity < 100'000 ? 60'000 : 600'000;
}

void measure(benchmark::State& state, Way const& way, Stream const& stream) {
    Run run(way.make, stream, warmUpEvents(stream));
    std::size_t counted = 0;
    for (auto _ : state) {
        auto const before = support::allocationCount();
        state.SetIterationTime(run.process(batchSize).count() * 1e-9);
        counted += support::allocationCount() - before;
    }
    auto const events = static_cast<double>(state.iterations()) * batchSize;
    state.counters["ns/EDR"] = benchmark::Counter(events * 1e-9, benchmark::Counter::kIsRate |
                                                                     benchmark::Counter::kInvert);
    state.counters["allocations/EDR"] = static_cast<double>(counted) / events;
}

std::string nameOf(Way const& way, Stream const& stream) {
    return fmt::format("{} | {}", way.name, stream.name);
}

double median(std::vector<double> values) {
    auto const middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// The costs of every way that can take part, turn by turn; the floor comes first.
std::vector<std::vector<Cost>> compare(Stream const& stream) {
    constexpr int turns = 30;
    std::vector<std::unique_ptr<Contestant>> contestants;
    for (auto const& way : ways) {
        if (stream.capacity <= way.largestCapacity) {
            contestants.push_back(
                std::make_unique<Contestant>(way.make, stream, warmUpEvents(stream)));
        }
    }
    std::vector<std::vector<Cost>> costs(contestants.size());
    for (int turn = 0; turn < turns; ++turn) {
        for (std::size_t i = 0; i < contestants.size(); ++i) {
            costs[i].push_back(contestants[i]->takeTurn());
        }
    }
    return costs;
}

std::string ratioToFloor(std::vector<Cost> const& costs, std::vector<Cost> const& floor) {
    std::vector<double> ratios;
    std::vector<double> nanoseconds;
    std::vector<double> allocations;
    for (std::size_t turn = 0; turn < costs.size(); ++turn) {
        ratios.push_back(costs[turn].nanoseconds / floor[turn].nanoseconds);
        nanoseconds.push_back(costs[turn].nanoseconds);
        allocations.push_back(costs[turn].allocations);
    }
    return fmt::format("{:.2f} ({:.0f} ns, {:.1f})", median(ratios), median(nanoseconds),
                       median(allocations));
}

void printRatios() {
    fmt::print("\n{:<18}", "ratio to floor");
    for (auto const& way : ways) {
        fmt::print("{:>24}", way.name);
    }
    fmt::print("\n");
    for (auto const& stream : streams) {
        fmt::print("{:<18}", stream.name);
        auto const costs = compare(stream);
        std::size_t column = 0;
        for (auto const& way : ways) {
            bool const tookPart = stream.capacity <= way.largestCapacity;
            fmt::print("{:>24}", tookPart ? ratioToFloor(costs[column++], costs.front()) : "-");
        }
        fmt::print("\n");
    }
    fmt::print("medians of turns; in brackets: nanoseconds and heap allocations an EDR\n");
}

// Single EDRs, timed one by one. What reading the clock twice takes is taken off.
void printPercentiles() {
    constexpr std::size_t events = 300'000;
    fmt::print("\n{:<34}{:>10}{:>10}{:>10}\n", "single EDRs, ns", "median", "99.9 %", "ratio");
    for (auto const& stream : streams) {
        for (auto const& way : {ways[0], ways[1]}) {
            Run run(way.make, stream, warmUpEvents(stream));
            std::vector<double> taken;
            std::vector<double> clock;
            for (std::size_t i = 0; i < events; ++i) {
                taken.push_back(run.process(1).count());
                clock.push_back(run.process(0).count());
            }
            auto const at = [](std::vector<double>& times, double share) {
                auto const place = times.begin() + static_cast<std::ptrdiff_t>(
                                                       share * static_cast<double>(times.size()));
                std::nth_element(times.begin(), place, times.end());
                return *place;
            };
            auto const empty = at(clock, 0.5);
            auto const median = at(taken, 0.5) - empty;
            auto const slowest = at(taken, 0.999) - empty;
            fmt::print("{:<34}{:>10.0f}{:>10.0f}{:>10.2f}\n", nameOf(way, stream), median, slowest,
                       slowest / median);
        }
    }
}

} // namespace

} // namespace bench

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    for (auto const& way : bench::ways) {
        for (auto const& stream : bench::streams) {
            if (stream.capacity <= way.largestCapacity) {
                benchmark::RegisterBenchmark(
                    bench::nameOf(way, stream).c_str(),
                    [&](benchmark::State& state) { bench::measure(state, way, stream); })
                    ->UseManualTime();
            }
        }
    }
    benchmark::RunSpecifiedBenchmarks();
    bench::printRatios();
    bench::printPercentiles();
}
