// What the host needs of the library for streams, which it loads when a registry names a stream.
#pragma once

#include "base/Bell.h"
#include "base/ExitCode.h"
#include "base/Notification.h"
#include "input/EdrSource.h"
#include "input/InputProgress.h"
#include "input/StreamCommands.h"
#include "registry/Registry.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace BAS {
class LogSink;
}
namespace EDR {
class Description;
}

namespace host {

// How far a host has come in a partition of a stream.
struct PartitionState {
    std::uint64_t number = 0;
    bool isOwned = false;       // else another host has it, or the servers don't answer
    std::uint64_t sequence = 0; // of the message that comes next; 0 before it is known
    std::uint64_t lag = 0;      // messages that wait, as far as the host knows
};

// The stream of a pipeline on this host. The pipeline's thread opens it again and again: after a
// failure to hold its partitions.
class StreamInput : public InputProgress {
public:
    // In the order of their numbers. Any thread.
    virtual std::vector<PartitionState> state() const = 0;

    // Reads on after what was kept. Waits for the servers; null when stop is set before. The
    // input and stop must outlive the source. Throws a BAS::Status when that isn't possible.
    virtual std::unique_ptr<EdrSource> open(Notification const& stop) = 0;
};

struct StreamLimits {
    std::uint64_t replicas = 3;
    std::int64_t bytes = -1; // of each partition; older messages go then
    double hours = 0;        // after which messages go; 0: never
};

struct StreamSource {
    std::vector<std::filesystem::path> files; // "-" is standard input
    std::vector<std::string> keys;            // "[SERVICE=]FIELD"
    std::optional<std::string> name;          // instead of one of the file's
    std::uint64_t from = 0;                   // the first line; 0: after the last published one
};

enum class OutputForm { text, json };

class StreamLibrary {
public:
    virtual ~StreamLibrary() = default;

    // Pipeline and description must outlive the input. Throws a BAS::Status when the state
    // directory can't be used, or when the servers turn the host away.
    virtual std::unique_ptr<StreamInput> makeInput(PipelineConfiguration const& pipeline,
                                                   EDR::Description const& description,
                                                   BAS::LogSink& log) = 0;
    // Takes commands for all hosts of the pipeline's stream from now on, and rings when one waits.
    // The log gets what keeps it from doing so. Everything given must outlive the object.
    virtual std::unique_ptr<StreamCommands> takeCommands(PipelineConfiguration const& pipeline,
                                                         Bell& arrived, BAS::LogSink& log) = 0;
    // Makes the streams that aren't there. All of these print to standard output, and throw a
    // BAS::Status when a server doesn't do what it should.
    virtual ExitCode create(StreamConfiguration const& stream, StreamLimits const& limits) = 0;
    virtual ExitCode show(StreamConfiguration const& stream, OutputForm form) = 0;
    virtual ExitCode publish(PipelineConfiguration const& pipeline, StreamSource const& source,
                             OutputForm form, Notification const& stop) = 0;
    // Gives a command to all hosts that take commands from the stream, and waits for an answer for
    // each partition.
    virtual ExitCode send(StreamConfiguration const& stream, StreamSending const& sending,
                          Notification const& stop) = 0;
};

inline constexpr char const* streamLibrary = "pipeline-host-stream"; // ".so" beside the modules
inline constexpr char const* streamLibraryEntry = "pipelineHostStream";
// The entry: the one library, which lives as long as the process.
using StreamLibraryEntry = StreamLibrary&();

} // namespace host
