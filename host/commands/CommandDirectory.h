// The directory into which operators put command files. Files are taken in order of name; each is
// answered by a result file and removed. While a file is executed it has the suffix ".taken", so
// that its sender knows whether it can still be withdrawn, and no command is executed twice. Used
// by one thread; one host has a directory at a time.
#pragma once

#include "base/DropDirectory.h"
#include "base/Notification.h"
#include "commands/CommandExecution.h"

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

    // Throws a BAS::Status when the directory can't be used, or when others than the user and root
    // can put files there.
    static void requireSafe(std::filesystem::path const& directory);

    // Takes a safe directory for this host alone, and answers commands during which an earlier host
    // ended. The log stays the caller's. Throws a BAS::Status when the directory can't be used.
    CommandDirectory(std::filesystem::path directory, Execute execute, BAS::LogSink& log);

    // Readable when command files may have come.
    int descriptor() const noexcept { return directoryM.changes().descriptor(); }
    // Executes all files, until there is none or stop is set. A file with a command whose result
    // comes later continues when it comes, and the files after it don't wait. Throws a BAS::Status
    // when the directory can't be used any more.
    void takeAll(Notification const& stop);

    // A result couldn't be written.
    bool hasFailed() const noexcept { return hasFailedM; }

private:
    // A command file that is being executed.
    struct File {
        std::string name;
        std::vector<Command> commands;
        std::vector<CommandResult> results; // of the first commands
        std::size_t reports = 0;            // for the sender, up to now
    };

    void answerInterrupted();
    std::vector<std::string> waiting();
    // Logs once that the file stays.
    void passBy(std::string const& name, std::string const& reason);
    bool isObstructed(std::string const& name);
    void take(std::string const& name);
    void carryOut(std::filesystem::path const& file, std::string const& name);
    void placeReports(File& file);
    void goOn(File& file);
    void answer(std::string const& name, std::string const& text);

    DropDirectory directoryM;
    Execute executeM;
    BAS::LogSink& logM;
    std::list<File> filesM;
    std::set<std::string> passedByM; // names that are too long
    bool hasFailedM = false;
};

} // namespace host
