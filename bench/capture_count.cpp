// Hands a fixed stream of events to the plug-in, so that its instructions can be counted: they are
// the same in every run of the same binary. Prints how many events that were.
//
//   capture_count STREAM     such as: capture_count "zipf, 1000"
#include "CaptureRun.h"

#include <cstdio>

int main(int argc, char** argv) {
    constexpr std::size_t events = 20'480;
    for (auto const& stream : bench::streams) {
        if (argc == 2 && std::string(argv[1]) == stream.name) {
            bench::Run const run(bench::makePlugIn, stream, events);
            std::printf("%zu\n", events);
            return 0;
        }
    }
    std::fputs("usage: capture_count STREAM\n", stderr);
    return 2;
}
