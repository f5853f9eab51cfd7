// Hands a fixed stream of events to the plug-in or to the floor, so that the instructions can be
// counted: they are the same in every run of the same binary. Prints how many events that were.
//
//   capture_count WAY STREAM          such as: capture_count plug-in "zipf, 1000"
//   capture_count WAY STREAM turns    for each line of its input, captures every prepared EDR once
//                                     and prints how many nanoseconds an EDR took
#include "Floor.h"

#include <cstdio>
#include <iostream>
#include <string>
#include <string_view>

namespace {

void takeTurns(bench::MakePlugIn const& make, bench::Stream const& stream) {
    // Enough keys to fill the capacity.
    bench::Run run(make, stream, stream.capacity < 100'000 ? 60'000 : 600'000);
    auto const round = [&] {
        bench::Nanoseconds taken{};
        for (std::size_t done = 0; done < bench::PreparedEdrs::count; done += bench::batchSize) {
            taken += run.process(bench::batchSize);
        }
        return taken.count() / bench::PreparedEdrs::count;
    };
    for (std::string line; std::getline(std::cin, line);) {
        // Others have had the caches since the last turn.
        round();
        std::printf("%.1f\n", round());
        std::fflush(stdout);
    }
}

} // namespace

int main(int argc, char** argv) {
    constexpr std::size_t events = 20'480;
    struct {
        std::string_view name;
        bench::MakePlugIn make;
    } const ways[] = {{"plug-in", bench::makePlugIn}, {"floor", bench::makeFloor}};
    for (auto const& way : ways) {
        for (auto const& stream : bench::streams) {
            if (argc < 3 || argv[1] != way.name || std::string_view(argv[2]) != stream.name) {
                continue;
            }
            if (argc == 4 && std::string_view(argv[3]) == "turns") {
                takeTurns(way.make, stream);
                return 0;
            }
            bench::Run const run(way.make, stream, events);
            std::printf("%zu\n", events);
            return 0;
        }
    }
    std::fputs("usage: capture_count WAY STREAM [turns]\n", stderr);
    return 2;
}
