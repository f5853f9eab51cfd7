// Commands that an operator gave all hosts of a stream, as the library for streams hands them over,
// and what the host answers. Used by one thread.
#pragma once

#include "base/FileDescriptor.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace host {

struct StreamCommand {
    std::uint64_t number = 0; // by which it is answered
    std::string text;         // of a command file
    std::string sender;       // as it calls itself
    // Nothing may begin from then on: the sender has gone.
    std::chrono::steady_clock::time_point latest;
};

struct StreamAnswer {
    std::vector<std::uint64_t> partitions; // that the answer is for, in order
    bool isFaultless = false;
    std::string result;    // one JSON object
    FileDescriptor report; // if there is one
};

class StreamCommands {
public:
    virtual ~StreamCommands() = default;

    // The next one whose sender still waits.
    virtual std::optional<StreamCommand> take() = 0;
    // Sends the answer while the caller goes on; nothing if it is for no partition.
    virtual void answer(std::uint64_t number, StreamAnswer answer) = 0;
};

// What an operator sends.
struct StreamSending {
    std::string text; // of a command file
    // Where the hosts' reports go: one that is missing or empty.
    std::optional<std::filesystem::path> directory;
    std::chrono::duration<double> timeout{30};
    bool isJson = false; // the answers as one line of JSON
};

} // namespace host
