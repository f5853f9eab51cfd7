// Sends the lines of files to the partitions of a stream. It is the only writer of them: every
// message says which one must be the last before it. It keeps no state: the headers of a
// partition's last message say how far it came.
#pragma once

#include "input/StreamLibrary.h"

namespace stream {

// Sends what isn't there yet, and prints a summary to standard output. Throws a BAS::Status when
// the servers, or a file, fail; the next call goes on where this one ended. What is wrong with keys
// goes to standard error.
host::ExitCode publishFiles(host::PipelineConfiguration const& pipeline,
                            host::StreamSource const& source, host::OutputForm form,
                            host::Notification const& stop);

} // namespace stream
