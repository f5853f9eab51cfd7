// Ways to keep events, measured side by side: each in a process of its own, in turns of a few
// milliseconds, so that a machine that is quick now and slow then is so for all of them.
#pragma once

#include "CaptureRun.h"

namespace bench {

// What one EDR took.
struct Cost {
    double nanoseconds;
    double allocations;
};

// A way at work in a child process, which waits between its turns and ends with this object.
class Contestant {
public:
    Contestant(MakePlugIn const& make, Stream const& stream, std::size_t warmUpEvents);
    ~Contestant();
    Contestant(Contestant const&) = delete;
    Contestant& operator=(Contestant const&) = delete;

    // The cost of every prepared EDR once. Throws when the child is gone.
    Cost takeTurn();

private:
    int socketM;
    int childM;
};

} // namespace bench
