// How the program ends, as its caller sees it.
#pragma once

#include <array>
#include <string_view>

namespace host {

enum ExitCode : int {
    done = 0,
    doneWithFaults = 1,
    usageWrong = 2,
    startFailed = 3,
    inputOrOutputFailed = 4,
    noAnswer = 75,
    interrupted = 130,
};

struct ExitCodeMeaning {
    ExitCode code;
    std::string_view meaning; // in lines
};

// As --help prints them.
inline constexpr std::array exitCodeMeanings = {
    ExitCodeMeaning{done, "done"},
    ExitCodeMeaning{
        doneWithFaults,
        "done, but input was rejected, a command was not Faultless, or a plug-in threw;\n"
        "for a run that a signal ended only the commands of --at-end count"},
    ExitCodeMeaning{usageWrong, "the command line is wrong"},
    ExitCodeMeaning{startFailed,
                    "the start failed, or a check found a problem; every problem is on\n"
                    "standard error"},
    ExitCodeMeaning{
        inputOrOutputFailed,
        "an input of Files, a reject file, a result, a state, a log, a generated file,\n"
        "a stream or standard output failed, or a command was still at work\n"
        "Commands.StopTimeout after a signal"},
    ExitCodeMeaning{noAnswer, "no host answered the command of send in time, or status found none"},
    ExitCodeMeaning{interrupted,
                    "a second signal ended the program at once, or a signal ended the\n"
                    "waiting of send, or publish before everything was published"},
};

} // namespace host
