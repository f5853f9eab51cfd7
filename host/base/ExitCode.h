// How the program ends, as its caller sees it.
#pragma once

namespace host {

enum ExitCode : int {
    done = 0,
    // Everything ran, but input was rejected, a command was not handled or a plug-in threw.
    doneWithFaults = 1,
    usageWrong = 2,
    startFailed = 3,
    inputOrOutputFailed = 4,
    // No host answered a command in time.
    noAnswer = 75,
    // A second signal, or a signal to a program that waits for an answer.
    interrupted = 130,
};

} // namespace host
