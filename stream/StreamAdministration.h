// Makes the streams and buckets of a pipeline, and shows them.
#pragma once

#include "input/StreamLibrary.h"

namespace stream {

// What isn't there is made; what is there stays as it is, but for the number of partitions, which
// streams of an earlier version are given. Both print to standard output, and throw a BAS::Status
// when the servers don't answer or refuse, or when the stream has another number of partitions.
host::ExitCode createStreams(host::StreamConfiguration const& stream,
                             host::StreamLimits const& limits);
// One row, or one object, for each partition.
host::ExitCode showStreams(host::StreamConfiguration const& stream, host::OutputForm form);

} // namespace stream
