// The input directory of a pipeline: hands out its complete files in order of name, moves each one
// to the directory "done" below it after it is processed, and remembers the pipeline's position in
// the present file. A file that can't be opened stays and is tried again when it changes. Used by
// the pipeline's thread; one host has a directory at a time.
#pragma once

#include "BAS/String.h"
#include "base/DropDirectory.h"
#include "base/Notification.h"
#include "input/InputStateFile.h"
#include "registry/Registry.h"

#include <deque>
#include <map>

namespace BAS {
class LogSink;
class Status;
} // namespace BAS

namespace host {

// A file of the directory, and where to begin in it.
struct DirectoryInput {
    InputConfiguration input;
    InputPosition start;
};

class InputDirectory {
public:
    // Creates the directory "done". Statuses have the pipeline's registered name and go to the log,
    // which stays the caller's. Throws a BAS::Status when a directory can't be used.
    InputDirectory(std::filesystem::path directory, BAS::String const& pipeline, BAS::LogSink& log);

    // Waits for a complete file, the one that was interrupted first; nothing once stop is set.
    // Throws a BAS::Status when the directory can't be read any more.
    std::optional<DirectoryInput> next(Notification const& stop);

    // The outcome of the file that was handed out last: everything up to the position is processed.
    void keepPosition(InputPosition const& position);
    // All of it is processed: it is moved. Throws a BAS::Status when that isn't possible, since it
    // would be processed again after a restart.
    void finish();
    // It can't be opened: it stays.
    void passBy(BAS::Status const& reason);
    // It can't be read to its end: it is moved and marked as failed. Throws as finish does.
    void giveUp(BAS::Status const& reason);

    // Files that vanished, couldn't be opened or couldn't be read to their end.
    std::uint64_t failedFiles() const noexcept { return failedFilesM; }
    // A state couldn't be written.
    bool hasFailed() const noexcept { return hasFailedM; }

private:
    void reportStrangeEntries();
    std::optional<std::string> nextName();
    void list();
    bool begin(std::string const& name);
    void resume(std::optional<InputState> const& state);
    std::filesystem::path pathOf(std::string const& name) const { return directoryM.path() / name; }
    std::string freeDoneName(std::string const& name) const;
    void moveAway(std::string const& suffix);
    std::filesystem::path moveCurrent(std::string const& suffix) const;
    void failOnce(std::string const& name, BAS::Status status);
    void report(BAS::Status status);
    void fail(BAS::Status const& status);

    DropDirectory directoryM;
    std::filesystem::path doneM;
    BAS::String pipelineM;
    BAS::LogSink& logM;
    InputStateFile stateFileM;
    InputState currentM;
    FileDescriptor currentFileM;
    std::deque<std::string> waitingM; // names, in order
    // Files that stay: the inode's time of change when they were tried.
    std::map<std::string, std::int64_t> passedByM;
    std::uint64_t failedFilesM = 0;
    bool hasFailedM = false;
};

} // namespace host
