// The directory into which operators put command files. Files are taken in order of name; each is
// answered by a result file and removed. While a file is executed it has the suffix ".taken", so
// that its sender knows whether it can still be withdrawn, and no command is executed twice.
// Results that nobody fetches go after some days. Used by one thread; one host has a directory at a
// time.
//
// In the directory of a group, nothing of what the host needs is left to the senders: a file is
// copied when it is taken, and what the host makes of it lies where they can only read.
#pragma once

#include "base/DropDirectory.h"
#include "base/Notification.h"
#include "commands/CommandExecution.h"
#include "commands/CommandInlet.h"

#include <chrono>
#include <functional>
#include <list>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace BAS {
class LogSink;
}

namespace host {

class CommandDirectory {
public:
    using Done = std::function<void(CommandResult)>;
    // Executes a command and returns its result, or returns nothing and calls done later, in the
    // same thread, during the lifetime of the directory.
    using Execute = std::function<std::optional<CommandResult>(Command const&, Done done)>;

    // Takes a safe inlet for this host alone, and answers commands during which an earlier host
    // ended. The log stays the caller's. Throws a BAS::Status when a directory can't be used.
    CommandDirectory(CommandInlet inlet, std::size_t keepDays, Execute execute, BAS::LogSink& log);

    std::filesystem::path const& path() const noexcept { return directoryM.path(); }

    // Readable when command files may have come.
    int descriptor() const noexcept { return directoryM.changes().descriptor(); }
    // Executes some of the files, so that who drops many doesn't keep the caller from everything
    // else, and returns whether more wait; none once stop is set. A file with a command whose
    // result comes later continues when it comes, and the files after it don't wait. Throws a
    // BAS::Status when the directory can't be used any more.
    bool takeSome(Notification const& stop);
    // When takeSome has old results to look for.
    std::chrono::steady_clock::time_point nextSweep() const noexcept { return nextSweepM; }

    // A result couldn't be written.
    bool hasFailed() const noexcept { return hasFailedM; }

private:
    enum class Taking {
        begun, // to be carried out
        gone,  // withdrawn, or answered already
        stays  // what can't be taken
    };

    // A command file that is being executed.
    struct File {
        std::string name;
        std::vector<Command> commands;
        std::vector<CommandResult> results; // of the first commands
        std::size_t reports = 0;            // for the sender, up to now
    };

    void answerInterrupted();
    void sweep();
    // Removes what the senders, who can't do so, have fetched; whether more waits.
    bool removeFetched();
    std::vector<std::string> waiting();
    // Logs once that the file stays.
    void passBy(std::string const& name, std::string const& reason);
    bool isTooLong(std::string const& name);
    bool isObstructed(std::string const& name);
    // False when the file stays.
    bool take(std::string const& name);
    Taking moveToTaken(std::string const& name);
    Taking copyToTaken(std::string const& name);
    void carryOut(std::filesystem::path const& file, std::string const& name);
    void confine(File& file);
    void goOn(File& file);
    void reject(std::string const& name, std::vector<std::string> const& problems);
    void answer(std::string const& name, std::string const& text);

    CommandInlet inletM;
    std::chrono::hours keepM;
    DropDirectory directoryM;
    Execute executeM;
    BAS::LogSink& logM;
    std::list<File> filesM;
    std::set<std::string> passedByM; // names that are logged
    std::chrono::steady_clock::time_point nextSweepM;
    bool hasFailedM = false;
};

} // namespace host
