// Runs one way to keep events over a fixed stream, for counting its instructions: they are the same
// in every run of the same binary.
//
//   capture_count WAY STREAM EVENTS     such as: capture_count plug-in "zipf, 1000" 20000
#include "CaptureRun.h"

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fputs("usage: capture_count WAY STREAM EVENTS\n", stderr);
        return 2;
    }
    for (auto const& way : bench::ways) {
        for (auto const& stream : bench::streams) {
            if (std::string(argv[1]) == way.name && std::string(argv[2]) == stream.name) {
                bench::Run run(way, stream);
                auto const events = std::strtoul(argv[3], nullptr, 10);
                for (std::size_t done = 0; done < events; done += bench::batchSize) {
                    run.process(bench::batchSize);
                }
                return 0;
            }
        }
    }
    std::fputs("capture_count: no such way or stream\n", stderr);
    return 2;
}
