// Executes the commands of operators on the objects of a host. Used by one thread; the host must
// outlive it.
#pragma once

#include "commands/CommandExecution.h"
#include "run/CommandJournal.h"
#include "run/Host.h"
#include "run/Reloader.h"

#include <functional>
#include <optional>

namespace host {

class CommandExecutor {
public:
    using Done = std::function<void(CommandResult)>;

    // Stop must outlive the executor: a command that goes on for too long once it is set ends the
    // process.
    CommandExecutor(Host& host, Notification const& stop);
    // A reload that goes on is given up; its done isn't called.
    ~CommandExecutor() = default;

    // Passes a command to its object, counts it and logs the result. A reload returns nothing, runs
    // while other commands are executed, and finishReloads passes its result to done.
    std::optional<CommandResult> execute(Command const& command, Done done);
    // The same, and waits for a reload; once stop is set, it is abandoned.
    CommandResult executeAndWait(Command const& command);

    // Readable when finishReloads has something to do.
    int descriptor() const noexcept { return reloaderM.descriptor(); }
    // Has the modules take over the data of each reload that was read.
    void finishReloads() { reloaderM.handBack(); }
    bool isReloading() const noexcept { return reloaderM.isBusy(); }
    // Abandons the reload that is being read and those that wait. Ends the process when the module
    // that reads doesn't return in time.
    void stopReloads();

    CommandJournal& journal() noexcept { return journalM; }

private:
    std::optional<Reload> reloadOf(Command const& command, BAS::RegisteredObject& object) const;
    CommandResult carryOut(Command const& command, BAS::RegisteredObject* object);
    void takeOver(Reload& reload);
    BAS::Status recordOutcome(Reload const& reload, BAS::RegisteredObject& object) const;
    void record(std::uint64_t number, CommandResult const& result);
    PipelineRunner* pipelineOf(BAS::String const& object) const;
    std::string unknownObjectText(BAS::String const& object) const;

    Host& hostM;
    Notification const& stopM;
    WriteWatch writeWatchM;
    CommandTimer timerM;
    CommandJournal journalM;
    Reloader reloaderM;
};

} // namespace host
