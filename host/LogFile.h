// A log with one record a line: UTC time, level, pipeline or "-", object or "-", message name and
// text, each after a blank. The process log and the logs of the pipelines are such files.
//
// Each record is written and flushed at once by itself, at the end of the file; several logs may
// share a file. Any thread may write.
#pragma once

#include "BAS/LogSink.h"
#include "FileDescriptor.h"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <mutex>
#include <string>

namespace host {

class LogFile : public BAS::LogSink {
public:
    // Writes to standard error.
    LogFile() = default;
    // Appends to the file. Throws a BAS::Status when it can't be opened.
    explicit LogFile(std::filesystem::path const& file);

    void write(BAS::Status const& status) override;

    // True when a record could not be written.
    bool hasFailed() const noexcept { return hasFailedM; }

private:
    std::mutex lockM;
    FileDescriptor fileM;
    std::atomic<bool> hasFailedM{false};
};

// The record of a status, with its line end. The pipeline is read from the object's registered
// name.
std::string logRecord(BAS::Status const& status, std::chrono::system_clock::time_point time);

} // namespace host
