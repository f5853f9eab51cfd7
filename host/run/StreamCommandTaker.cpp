#include "run/StreamCommandTaker.h"

#include "BAS/LogSink.h"
#include "base/EscapedText.h"
#include "base/Failures.h"
#include "base/JsonText.h"
#include "base/MessageCatalogue.h"
#include "base/PrivateDirectory.h"
#include "base/WholeFile.h"
#include "commands/CommandReport.h"
#include "commands/SharedCommand.h"

#include <fmt/format.h>

#include <algorithm>

namespace host {

namespace {

constexpr std::size_t mostAtATime = 16;

// An object wrote a file that a value names. It wasn't there before.
void removeWritten(CommandResult& result, std::filesystem::path const& report) {
    for (auto& file : result.files) {
        if (file.path == report) {
            file.path = sharedReportValue;
            continue;
        }
        if (file.isOpened) {
            std::error_code ignored;
            std::filesystem::remove(file.path, ignored);
            file.hasFailed = true;
            file.completeness = Completeness::cut;
            file.reason = "it is removed again: a command to all hosts writes no file";
        }
    }
}

FileDescriptor openedReport(std::filesystem::path const& report) {
    std::error_code error;
    return std::filesystem::exists(report, error) ? openRegularFile(report) : FileDescriptor();
}

} // namespace

// A command that is carried out.
struct StreamCommandTaker::Work {
    std::uint64_t number = 0;
    std::vector<std::uint64_t> partitions; // that the host owned when it began
    // Of the report, until it is opened to be sent.
    std::unique_ptr<PrivateDirectory> directory = {};

    std::filesystem::path report() const {
        return directory == nullptr ? "" : directory->path() / "collected";
    }
};

StreamCommandTaker::StreamCommandTaker(std::string name, std::unique_ptr<StreamCommands> commands,
                                       Owned owned, CommandDirectory::Execute execute,
                                       BAS::LogSink& log)
    : nameM(std::move(name)), commandsM(std::move(commands)), ownedM(std::move(owned)),
      executeM(std::move(execute)), logM(log) {
}

bool StreamCommandTaker::takeSome(Notification const& stop) {
    for (std::size_t taken = 0; taken < mostAtATime; ++taken) {
        auto const command = stop.isSet() ? std::nullopt : commandsM->take();
        if (!command) {
            return false;
        }
        carryOut(*command);
    }
    return true;
}

void StreamCommandTaker::carryOut(StreamCommand const& given) {
    auto const work = std::make_shared<Work>(Work{given.number, ownedM()});
    if (work->partitions.empty()) {
        logM.write(makeStatus(BAS::Status::info, {}, "MSG_STREAM_COMMAND_PASSED", {nameM}));
        commandsM->answer(given.number, {});
        return;
    }
    logM.write(
        makeStatus(BAS::Status::info, {}, "MSG_STREAM_COMMAND_TAKEN", {nameM, given.sender}));
    try {
        work->directory = std::make_unique<PrivateDirectory>();
        auto command = sharedCommand(given.text, [work] { return work->report(); });
        command.latest = given.latest;
        auto result =
            executeM(command, [this, work](CommandResult late) { finish(*work, std::move(late)); });
        if (result) {
            finish(*work, std::move(*result));
        }
    } catch (StartFailure const& failure) {
        refuse(*work, messageText(failure.problems.front()));
    } catch (BAS::Status const& status) {
        refuse(*work, messageText(status));
    }
}

void StreamCommandTaker::finish(Work const& work, CommandResult result) {
    removeWritten(result, work.report());
    commandsM->answer(work.number, {stillOwned(work), result.isFaultless(), resultJson(result),
                                    openedReport(work.report())});
}

// A command that can't be carried out.
void StreamCommandTaker::refuse(Work const& work, std::string const& reason) {
    logM.write(makeStatus(BAS::Status::error, {}, "ERR_STREAM_COMMAND_IGNORED", {nameM, reason}));
    commandsM->answer(work.number, {stillOwned(work), false,
                                    jsonObject({{"Verdict", quotedText("not handled")},
                                                {"Reason", quotedText(reason)}}),
                                    FileDescriptor()});
}

// What another host owns by now may be in both hosts' stores.
std::vector<std::uint64_t> StreamCommandTaker::stillOwned(Work const& work) const {
    auto const now = ownedM();
    std::vector<std::uint64_t> both;
    std::set_intersection(now.begin(), now.end(), work.partitions.begin(), work.partitions.end(),
                          std::back_inserter(both));
    return both;
}

} // namespace host
