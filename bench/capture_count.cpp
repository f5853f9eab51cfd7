// Hands a fixed stream of events to the plug-in or to the floor, so that the instructions can be
// counted: they are the same in every run of the same binary. Prints how many events that were.
//
//   capture_count WAY STREAM     such as: capture_count plug-in "zipf, 1000"
#include "Floor.h"

#include <cstdio>
#include <string_view>

int main(int argc, char** argv) {
    constexpr std::size_t events = 20'480;
    struct {
        std::string_view name;
        bench::MakePlugIn make;
    } const ways[] = {{"plug-in", bench::makePlugIn}, {"floor", bench::makeFloor}};
    for (auto const& way : ways) {
        for (auto const& stream : bench::streams) {
            if (argc == 3 && argv[1] == way.name && std::string_view(argv[2]) == stream.name) {
                bench::Run const run(way.make, stream, events);
                std::printf("%zu\n", events);
                return 0;
            }
        }
    }
    std::fputs("usage: capture_count WAY STREAM\n", stderr);
    return 2;
}
