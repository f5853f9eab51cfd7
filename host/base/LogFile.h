// A log with one record a line: UTC time, level, pipeline or "-", object or "-", message name and
// text, each after a blank. The process log and the logs of the pipelines are such files.
//
// Each record is written and flushed at once by itself, at the end of the file; several logs may
// share a file. Any thread may write.
#pragma once

#include "BAS/LogSink.h"
#include "BAS/Status.h"
#include "base/FileDescriptor.h"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace host {

class LogFile : public BAS::LogSink {
public:
    // Writes to standard error what is at least that severe. On a terminal, a record replaces the
    // progress line; to the journal of the service manager, a record goes with a priority and
    // without its time.
    explicit LogFile(BAS::Status::Severity least);
    // Appends to the file. Throws a BAS::Status when it can't be opened.
    LogFile(std::filesystem::path const& file, BAS::Status::Severity least);

    void write(BAS::Status const& status) override;
    // Goes on in the file that has the log's name by now, or in the old one if that can't be
    // opened, which is logged there. Any thread.
    void reopen();

    // True when a record could not be written.
    bool hasFailed() const noexcept { return hasFailedM; }

private:
    std::string text(BAS::Status const& status) const;

    std::mutex lockM;
    std::filesystem::path pathM; // empty for standard error
    FileDescriptor fileM;
    BAS::Status::Severity leastM;
    bool isTerminalM = false;
    bool isJournalM = false;
    std::atomic<bool> hasFailedM{false};
};

// The level of that name, or nothing.
std::optional<BAS::Status::Severity> levelOfName(std::string_view name);
std::string levelName(BAS::Status::Severity level);
// The names of all levels, from the least severe.
std::span<std::string_view const> levelNames();

// The record of a status, with its line end. The pipeline is read from the object's registered
// name.
std::string logRecord(BAS::Status const& status, std::chrono::system_clock::time_point time);
// The same for the system's journal: the level as its priority, and no time.
std::string journalRecord(BAS::Status const& status);

} // namespace host
