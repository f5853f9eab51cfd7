#include "commands/CommandDirectory.h"

#include "BAS/LogSink.h"
#include "base/Failures.h"
#include "base/WholeFile.h"
#include "commands/CommandFile.h"
#include "commands/CommandReport.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>

namespace host {

namespace {

constexpr char const* takenSuffix = ".taken";
constexpr char const* anyReportSuffix = ".report";
constexpr std::chrono::hours sweepPeriod{1};
// Command files, and fetched ones, that are seen to at a time.
constexpr std::size_t mostAtATime = 16;
// The longest name that is made from a command file's is its stem and these characters.
constexpr std::string_view longestAddition = ".9999.report";
constexpr std::size_t longestStem = NAME_MAX - longestAddition.size();

std::filesystem::path withSuffix(std::filesystem::path const& directory, std::string const& name,
                                 char const* suffix) {
    return directory / std::filesystem::path(name).replace_extension(suffix);
}

std::string userName(uid_t number) {
    auto const* const user = ::getpwuid(number);
    return user == nullptr ? std::to_string(number) : user->pw_name;
}

// What somebody put there, or why it can't be read.
struct ForeignText {
    std::string bytes;
    uid_t owner = 0;
    std::string problem;
};

ForeignText readForeignText(std::filesystem::path const& file, std::string const& name) {
    ForeignText text;
    try {
        auto const opened = openForeignFile(file);
        struct stat found = {};
        if (::fstat(opened.number(), &found) != 0) {
            throw fileStatus("ERR_FILE_NOT_READABLE", file, errno);
        }
        if (found.st_nlink > 1) { // perhaps of a file that its sender can't read
            throw makeStatus(BAS::Status::error, {}, "ERR_FILE_NOT_READABLE",
                             {file.string(), "it has further names, expected a file of its own"});
        }
        text.owner = found.st_uid;
        text.bytes = readCommandBytes(opened, name);
    } catch (BAS::Status const& status) {
        text.problem = messageText(status);
    }
    return text;
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

CommandDirectory::CommandDirectory(CommandInlet inlet, std::size_t keepDays, Execute execute,
                                   BAS::LogSink& log)
    : inletM(std::move(inlet)), keepM(24 * keepDays),
      directoryM(inletM.directory,
                 inletM.isOfGroup() ? DropDirectory::Lock::elsewhere : DropDirectory::Lock::held),
      executeM(std::move(execute)), logM(log) {
    answerInterrupted();
}

void CommandDirectory::answerInterrupted() {
    for (auto const& name : completeFiles(inletM.answers, takenSuffix)) {
        auto const original = std::filesystem::path(name).replace_extension(commandSuffix).string();
        if (inletM.isOfGroup() && hasEntry(directoryM.path() / original)) {
            ::unlink((inletM.answers / name).c_str()); // copied, and not begun
            continue;
        }
        auto const status =
            makeStatus(BAS::Status::error, {}, "ERR_COMMAND_INTERRUPTED", {original});
        logM.write(status);
        answer(original, problemFileText(original, {messageText(status)}));
    }
}

// Results and reports of which nobody took notice for long.
void CommandDirectory::sweep() {
    auto const now = std::chrono::steady_clock::now();
    if (now < nextSweepM) {
        return;
    }
    nextSweepM = now + sweepPeriod;
    auto const oldest =
        std::chrono::system_clock::to_time_t(std::chrono::system_clock::now() - keepM);
    std::size_t removed = 0;
    for (auto const* const suffix : {resultSuffix, anyReportSuffix}) {
        for (auto const& name : completeFiles(inletM.answers, suffix)) {
            auto const file = inletM.answers / name;
            struct stat found = {};
            if (::lstat(file.c_str(), &found) == 0 && found.st_mtime < oldest &&
                ::unlink(file.c_str()) == 0) {
                ++removed;
            }
        }
    }
    if (removed > 0) {
        logM.write(
            makeStatus(BAS::Status::info, {}, "MSG_RESULTS_REMOVED",
                       {std::to_string(removed), std::to_string(keepM / std::chrono::hours(24)),
                        inletM.answers.string()}));
    }
}

bool CommandDirectory::removeFetched() {
    if (!inletM.isOfGroup()) {
        return false;
    }
    std::size_t removed = 0;
    for (auto const& name : directoryM.completeFiles(fetchedSuffix)) {
        if (removed == mostAtATime) {
            return true;
        }
        removeAnswer((inletM.answers / std::filesystem::path(name).stem()).string());
        removed += ::unlink((directoryM.path() / name).c_str()) == 0 ? 1 : 0;
    }
    return false;
}

// Files that can't be taken are logged once and stay.
std::vector<std::string> CommandDirectory::waiting() {
    for (auto const& name : directoryM.strangeEntries(commandSuffix)) {
        passBy(name, "expected a regular file");
    }
    return directoryM.completeFiles(commandSuffix);
}

bool CommandDirectory::isTooLong(std::string const& name) {
    bool const isLong = std::filesystem::path(name).stem().native().size() > longestStem;
    if (isLong) {
        passBy(name, fmt::format("its name is too long, expected at most {} bytes before '{}'",
                                 longestStem, commandSuffix));
    }
    return isLong;
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
        auto const file = withSuffix(inletM.answers, name, suffix);
        struct stat found = {};
        if (::lstat(file.c_str(), &found) == 0 && !S_ISREG(found.st_mode)) {
            passBy(name, fmt::format("'{}' is in the way: {}, expected a regular file or none",
                                     file.filename().string(), fileKindName(found.st_mode)));
            return true;
        }
    }
    return false;
}

// More may have come while commands were executed.
bool CommandDirectory::takeSome(Notification const& stop) {
    directoryM.changes().takeChanges();
    sweep();
    bool const hasMoreFetched = removeFetched();
    std::size_t taken = 0;
    for (auto const& name : waiting()) {
        if (stop.isSet()) {
            return false;
        }
        if (taken == mostAtATime) {
            return true;
        }
        taken += take(name) ? 1 : 0;
    }
    return hasMoreFetched || taken > 0;
}

bool CommandDirectory::take(std::string const& name) {
    if (isTooLong(name) || isObstructed(name)) {
        return false;
    }
    auto const taking = inletM.isOfGroup() ? copyToTaken(name) : moveToTaken(name);
    if (taking == Taking::begun) {
        carryOut(withSuffix(inletM.answers, name, takenSuffix), name);
    }
    return taking != Taking::stays;
}

CommandDirectory::Taking CommandDirectory::moveToTaken(std::string const& name) {
    auto const taken = withSuffix(inletM.answers, name, takenSuffix);
    if (::rename((directoryM.path() / name).c_str(), taken.c_str()) == 0) {
        return Taking::begun;
    }
    if (errno != ENOENT) { // withdrawn
        throw fileStatus("ERR_DIRECTORY_NOT_USABLE", directoryM.path(), errno);
    }
    return Taking::gone;
}

// Whatever a sender does to the file meanwhile. One that can't be read is taken as an empty one,
// and answered.
CommandDirectory::Taking CommandDirectory::copyToTaken(std::string const& name) {
    auto const file = directoryM.path() / name;
    auto const taken = withSuffix(inletM.answers, name, takenSuffix);
    auto const text = readForeignText(file, name);
    try {
        writeWholeFile(taken, text.bytes);
    } catch (BAS::Status const& status) {
        passBy(name, messageText(status));
        return Taking::stays;
    }
    if (::unlink(file.c_str()) != 0) {
        auto const error = errno;
        ::unlink(taken.c_str());
        if (error == ENOENT) { // withdrawn
            return Taking::gone;
        }
        passBy(name, messageText(fileStatus("ERR_FILE_NOT_WRITABLE", file, error)));
        return Taking::stays;
    }
    if (!text.problem.empty()) {
        reject(name, {text.problem});
        return Taking::gone;
    }
    logM.write(
        makeStatus(BAS::Status::info, {}, "MSG_COMMAND_TAKEN", {name, userName(text.owner)}));
    return Taking::begun;
}

void CommandDirectory::carryOut(std::filesystem::path const& file, std::string const& name) {
    try {
        filesM.push_back({name, readCommandFile(file, name), {}, 0});
        confine(filesM.back());
        goOn(filesM.back());
    } catch (StartFailure const& failure) {
        reject(name, textsOf(failure));
    } catch (BAS::Status const& status) {
        reject(name, {messageText(status)});
    }
}

// Where the reports of the file's commands may go.
void CommandDirectory::confine(File& file) {
    for (auto& command : file.commands) {
        command.room = inletM.isOfGroup() ? &*inletM.room : nullptr;
        command.reportForSender = [this, &file] {
            return inletM.answers / (std::filesystem::path(file.name).stem().string() +
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

void CommandDirectory::reject(std::string const& name, std::vector<std::string> const& problems) {
    logM.write(makeStatus(BAS::Status::error, {}, "ERR_COMMAND_MALFORMED",
                          {name, fmt::format("{}", fmt::join(problems, "; "))}));
    answer(name, problemFileText(name, problems));
}

// The command file is removed after its result is written.
void CommandDirectory::answer(std::string const& name, std::string const& text) {
    try {
        writeWholeFile(withSuffix(inletM.answers, name, resultSuffix), text);
    } catch (BAS::Status const& status) {
        hasFailedM = true;
        logM.write(status);
    }
    ::unlink(withSuffix(inletM.answers, name, takenSuffix).c_str());
}

} // namespace host
