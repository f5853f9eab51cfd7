// The program datadump: its command line and its exit codes.
#pragma once

namespace reader {

enum ExitCode : int {
    done = 0,
    foundOrDifferent = 1,
    wrongUsage = 2,
    noInput = 3,
    outputFailed = 4,
};

int runProgram(int argc, char const* const* argv);

} // namespace reader
