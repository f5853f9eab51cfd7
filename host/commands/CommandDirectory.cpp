#include "commands/CommandDirectory.h"

#include "BAS/LogSink.h"
#include "base/Failures.h"
#include "base/WholeFile.h"
#include "commands/CommandFile.h"
#include "commands/CommandReport.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <climits>

namespace host {

namespace {

constexpr char const* takenSuffix = ".taken";
// The longest name that is made from a command file's is its stem and these characters.
constexpr std::string_view longestAddition = ".9999.report";
constexpr std::size_t longestStem = NAME_MAX - longestAddition.size();

std::filesystem::path withSuffix(std::filesystem::path const& directory, std::string const& name,
                                 char const* suffix) {
    return directory / std::filesystem::path(name).replace_extension(suffix);
}

// The problems of a file with their places, without the message's name.
std::vector<std::string> textsOf(StartFailure const& failure) {
    std::vector<std::string> texts;
    for (auto const& problem : failure.problems) {
        texts.push_back(messageText(problem));
    }
    return texts;
}

} // namespace

void CommandDirectory::requireSafe(std::filesystem::path const& directory) {
    DropDirectory::requireUsable(directory);
    struct stat found = {};
    if (::stat(directory.c_str(), &found) != 0) {
        throw fileStatus("ERR_DIRECTORY_NOT_USABLE", directory, errno);
    }
    bool const isOwnersOnly = (found.st_mode & (S_IWGRP | S_IWOTH)) == 0;
    if (!isOwnersOnly || (found.st_uid != ::geteuid() && found.st_uid != 0)) {
        throw makeStatus(BAS::Status::critical, {}, "ERR_DIRECTORY_NOT_PRIVATE",
                         {directory.string(), std::to_string(found.st_uid),
                          fmt::format("{:04o}", found.st_mode & 07777),
                          std::to_string(::geteuid())});
    }
}

CommandDirectory::CommandDirectory(std::filesystem::path directory, Execute execute,
                                   BAS::LogSink& log)
    : directoryM(std::move(directory)), executeM(std::move(execute)), logM(log) {
    answerInterrupted();
}

void CommandDirectory::answerInterrupted() {
    for (auto const& name : directoryM.completeFiles(takenSuffix)) {
        auto const original = std::filesystem::path(name).replace_extension(commandSuffix).string();
        auto const status =
            makeStatus(BAS::Status::error, {}, "ERR_COMMAND_INTERRUPTED", {original});
        logM.write(status);
        answer(original, problemFileText(original, {messageText(status)}));
    }
}

// The command files that can be answered. A file whose name is too long is logged once and stays.
std::vector<std::string> CommandDirectory::waiting() {
    for (auto const& name : directoryM.strangeEntries(commandSuffix)) {
        passBy(name, "expected a regular file");
    }
    auto names = directoryM.completeFiles(commandSuffix);
    std::erase_if(names, [this](std::string const& name) {
        bool const isTooLong = std::filesystem::path(name).stem().native().size() > longestStem;
        if (isTooLong) {
            passBy(name, fmt::format("its name is too long, expected at most {} bytes before '{}'",
                                     longestStem, commandSuffix));
        }
        return isTooLong || isObstructed(name);
    });
    return names;
}

void CommandDirectory::passBy(std::string const& name, std::string const& reason) {
    if (passedByM.insert(name).second) {
        logM.write(makeStatus(BAS::Status::error, {}, "ERR_COMMAND_MALFORMED", {name, reason}));
    }
}

// Whether what the host makes of the file has its place taken by something else, such as a
// directory.
bool CommandDirectory::isObstructed(std::string const& name) {
    for (auto const* const suffix : {takenSuffix, resultSuffix}) {
        auto const file = withSuffix(directoryM.path(), name, suffix);
        struct stat found = {};
        if (::lstat(file.c_str(), &found) == 0 && !S_ISREG(found.st_mode)) {
            passBy(name, fmt::format("'{}' is in the way: {}, expected a regular file or none",
                                     file.filename().string(), fileKindName(found.st_mode)));
            return true;
        }
    }
    return false;
}

void CommandDirectory::takeAll(Notification const& stop) {
    directoryM.changes().takeChanges();
    for (auto names = waiting(); !names.empty(); names = waiting()) {
        for (auto const& name : names) {
            if (stop.isSet()) {
                return;
            }
            take(name);
        }
    }
}

void CommandDirectory::take(std::string const& name) {
    auto const taken = withSuffix(directoryM.path(), name, takenSuffix);
    if (::rename((directoryM.path() / name).c_str(), taken.c_str()) != 0) {
        if (errno == ENOENT) {
            return; // withdrawn
        }
        throw fileStatus("ERR_DIRECTORY_NOT_USABLE", directoryM.path(), errno);
    }
    carryOut(taken, name);
}

void CommandDirectory::carryOut(std::filesystem::path const& file, std::string const& name) {
    std::vector<std::string> problems;
    try {
        filesM.push_back({name, readCommandFile(file, name), {}, 0});
        placeReports(filesM.back());
        goOn(filesM.back());
        return;
    } catch (StartFailure const& failure) {
        problems = textsOf(failure);
    } catch (BAS::Status const& status) {
        problems = {messageText(status)};
    }
    logM.write(makeStatus(BAS::Status::error, {}, "ERR_COMMAND_MALFORMED",
                          {name, fmt::format("{}", fmt::join(problems, "; "))}));
    answer(name, problemFileText(name, problems));
}

void CommandDirectory::placeReports(File& file) {
    for (auto& command : file.commands) {
        command.reportForSender = [this, &file] {
            return directoryM.path() / (std::filesystem::path(file.name).stem().string() +
                                        reportSuffix(++file.reports));
        };
    }
}

// Executes commands up to one whose result comes later, or to the end of the file.
void CommandDirectory::goOn(File& file) {
    while (file.results.size() < file.commands.size()) {
        auto result =
            executeM(file.commands[file.results.size()], [this, &file](CommandResult late) {
                file.results.push_back(std::move(late));
                goOn(file);
            });
        if (!result) {
            return;
        }
        file.results.push_back(std::move(*result));
    }
    answer(file.name, resultFileText(file.name, file.results));
    filesM.remove_if([&](File const& each) { return &each == &file; });
}

// The command file is removed after its result is written.
void CommandDirectory::answer(std::string const& name, std::string const& text) {
    try {
        writeWholeFile(withSuffix(directoryM.path(), name, resultSuffix), text);
    } catch (BAS::Status const& status) {
        hasFailedM = true;
        logM.write(status);
    }
    ::unlink(withSuffix(directoryM.path(), name, takenSuffix).c_str());
}

} // namespace host
