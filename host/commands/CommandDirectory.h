// The directory into which operators put command files. Files are taken in order of name; each is
// answered by a result file and removed. While a file is carried out it bears the suffix ".taken",
// so that its sender can tell whether it can still be withdrawn, and no command is carried out
// twice. Used by one thread; one host has a directory at a time.
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
    // Carries a command out and returns its result, or nothing and calls done later, in the same
    // thread, as long as the directory lives.
    using Execute = std::function<std::optional<CommandResult>(Command const&, Done done)>;

    // Throws a BAS::Status when the directory can't be used, or when others than the user and root
    // can put files there.
    static void requireSafe(std::filesystem::path const& directory);

    // Takes a directory that is safe for this host alone, and answers commands in whose middle an
    // earlier host ended. The log stays the caller's. Throws a BAS::Status when the directory can't
    // be used.
    CommandDirectory(std::filesystem::path directory, Execute execute, BAS::LogSink& log);

    // Readable when command files may have come.
    int descriptor() const noexcept { return directoryM.changes().descriptor(); }
    // Carries out all files that wait, until there is none or stop is set. A file with a command
    // whose result comes later goes on then, and the files behind it don't wait for it. Throws a
    // BAS::Status when the directory can't be used any more.
    void takeAll(Notification const& stop);

    // A result couldn't be written.
    bool hasFailed() const noexcept { return hasFailedM; }

private:
    // A command file in the middle of being carried out.
    struct File {
        std::string name;
        std::vector<Command> commands;
        std::vector<CommandResult> results; // of the first commands
    };

    void answerInterrupted();
    std::vector<std::string> waiting();
    void take(std::string const& name);
    void carryOut(std::filesystem::path const& file, std::string const& name);
    void goOn(File& file);
    void answer(std::string const& name, std::string const& text);

    DropDirectory directoryM;
    Execute executeM;
    BAS::LogSink& logM;
    std::list<File> filesM;
    std::set<std::string> passedByM; // names that leave no room for a result's
    bool hasFailedM = false;
};

} // namespace host
