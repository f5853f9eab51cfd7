// Carries out the commands that an operator gave all hosts of a stream, and answers them. Used by
// the thread that carries out all commands.
#pragma once

#include "base/Notification.h"
#include "commands/CommandDirectory.h"
#include "input/StreamCommands.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace host {

class StreamCommandTaker {
public:
    // The numbers of the partitions that this host owns just now, in order.
    using Owned = std::function<std::vector<std::uint64_t>()>;

    // The log stays the caller's; execute must not call done after the taker's end. The name is the
    // stream's.
    StreamCommandTaker(std::string name, std::unique_ptr<StreamCommands> commands, Owned owned,
                       CommandDirectory::Execute execute, BAS::LogSink& log);

    // Carries some out, so that who sends many doesn't keep the caller from everything else, and
    // returns whether more may wait; none once stop is set.
    bool takeSome(Notification const& stop);

private:
    struct Work;

    void carryOut(StreamCommand const& given);
    void finish(Work const& work, CommandResult result);
    void refuse(Work const& work, std::string const& reason);
    std::vector<std::uint64_t> stillOwned(Work const& work) const;

    std::string nameM;
    std::unique_ptr<StreamCommands> commandsM;
    Owned ownedM;
    CommandDirectory::Execute executeM;
    BAS::LogSink& logM;
};

} // namespace host
