#include "input/InputDirectory.h"

#include "BAS/LogSink.h"
#include "base/Failures.h"
#include "base/Poll.h"
#include "base/WholeFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>

namespace host {

namespace {

constexpr char const* doneDirectory = "done";
constexpr char const* stateFile = ".state";
constexpr char const* rejectSuffix = ".reject";
constexpr char const* failedSuffix = ".failed";

std::filesystem::path madeDirectory(std::filesystem::path const& directory) {
    if (::mkdir(directory.c_str(), 0750) != 0 && errno != EEXIST) {
        throw fileStatus("ERR_DIRECTORY_NOT_USABLE", directory, errno);
    }
    if (std::filesystem::is_symlink(directory)) {
        throw makeStatus(BAS::Status::critical, {}, "ERR_DIRECTORY_NOT_USABLE",
                         {directory.string(), "it is a link, expected a directory"});
    }
    DropDirectory::requireUsable(directory);
    return directory;
}

// When the file or its permissions changed; 0 for a missing file.
std::int64_t timeOfChange(std::filesystem::path const& file) {
    struct stat found = {};
    return ::lstat(file.c_str(), &found) == 0
               ? found.st_ctim.tv_sec * 1'000'000'000L + found.st_ctim.tv_nsec
               : 0;
}

// Whether that is the file that is open, and not another one in its place.
bool isSame(std::filesystem::path const& path, FileDescriptor const& file) {
    struct stat named = {};
    struct stat opened = {};
    return ::lstat(path.c_str(), &named) == 0 && ::fstat(file.number(), &opened) == 0 &&
           named.st_ino == opened.st_ino && named.st_dev == opened.st_dev;
}

// Returns 0 or the error number, which is EEXIST when the target exists.
int renameToNew(std::filesystem::path const& from, std::filesystem::path const& to) {
    return ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0 ? 0
                                                                                            : errno;
}

} // namespace

InputDirectory::InputDirectory(std::filesystem::path directory, BAS::String const& pipeline,
                               BAS::LogSink& log)
    : directoryM(std::move(directory)), doneM(madeDirectory(directoryM.path() / doneDirectory)),
      pipelineM(pipeline), logM(log), stateFileM(doneM / stateFile) {
    list();
    resume(stateFileM.read());
}

std::optional<DirectoryInput> InputDirectory::next(Notification const& stop) {
    while (!stop.isSet()) {
        auto const name = nextName();
        if (!name) {
            waitForAny({directoryM.changes().descriptor(), stop.descriptor()});
        } else if (begin(*name)) {
            return DirectoryInput{
                {pathOf(*name), doneM / (currentM.doneName + rejectSuffix), currentFileM.number()},
                currentM.position};
        }
    }
    return std::nullopt;
}

std::optional<std::string> InputDirectory::nextName() {
    if (directoryM.changes().takeChanges()) {
        list();
    }
    while (!waitingM.empty()) {
        auto name = std::move(waitingM.front());
        waitingM.pop_front();
        auto const passedBy = passedByM.find(name);
        if (passedBy == passedByM.end() || passedBy->second != timeOfChange(pathOf(name))) {
            return name;
        }
    }
    return std::nullopt;
}

// They are no files of the pipeline's, so that they don't count as failed ones.
void InputDirectory::reportStrangeEntries() {
    for (auto const& name : directoryM.strangeEntries()) {
        auto const changed = timeOfChange(pathOf(name));
        if (std::exchange(passedByM[name], changed) != changed) {
            report(makeStatus(BAS::Status::warning, {}, "ERR_FILE_NOT_READABLE",
                              {pathOf(name).string(), "expected a regular file, it stays"}));
        }
    }
}

void InputDirectory::list() {
    reportStrangeEntries();
    auto names = directoryM.completeFiles();
    waitingM.assign(std::make_move_iterator(names.begin()), std::make_move_iterator(names.end()));
}

// The interrupted file comes first if it is still the same.
void InputDirectory::resume(std::optional<InputState> const& state) {
    if (!state) {
        return;
    }
    auto const waiting = std::find(waitingM.begin(), waitingM.end(), state->name);
    if (waiting == waitingM.end()) {
        return;
    }
    if (FileIdentity::of(pathOf(state->name)) != state->identity) {
        report(makeStatus(BAS::Status::warning, {}, "ERR_INPUT_CHANGED",
                          {pathOf(state->name).string()}));
        return;
    }
    currentM = *state;
    waitingM.erase(waiting);
    waitingM.push_front(state->name);
}

// Makes the file the current one; returns false when it has vanished.
bool InputDirectory::begin(std::string const& name) {
    std::optional<FileIdentity> identity;
    try {
        currentFileM = openForeignFile(pathOf(name));
        identity = FileIdentity::of(currentFileM.number());
    } catch (BAS::Status const& status) {
        failOnce(name, status);
        return false;
    }
    bool const isInterrupted = currentM.position.bytes > 0 && currentM.name == name;
    if (isInterrupted && currentM.identity == *identity) {
        report(makeStatus(BAS::Status::info, {}, "MSG_INPUT_RESUMED",
                          {pathOf(name).string(), std::to_string(currentM.position.bytes)}));
    } else {
        currentM = {name, *identity, {}, freeDoneName(name)};
    }
    return true;
}

// A name that is free in the directory "done", also for the rejects: the file's own, or with a
// number.
std::string InputDirectory::freeDoneName(std::string const& name) const {
    auto candidate = name;
    for (int number = 2;
         hasEntry(doneM / candidate) || hasEntry(doneM / (candidate + rejectSuffix)) ||
         hasEntry(doneM / (candidate + failedSuffix));
         ++number) {
        candidate = name + "." + std::to_string(number);
    }
    return candidate;
}

void InputDirectory::keepPosition(InputPosition const& position) {
    currentM.position = position;
    try {
        stateFileM.write(currentM);
    } catch (BAS::Status const& status) {
        fail(status);
    }
}

void InputDirectory::finish() {
    passedByM.erase(currentM.name);
    moveAway({});
}

void InputDirectory::passBy(BAS::Status const& reason) {
    failOnce(currentM.name, reason);
}

void InputDirectory::giveUp(BAS::Status const& reason) {
    ++failedFilesM;
    report(reason);
    moveAway(failedSuffix);
}

void InputDirectory::moveAway(std::string const& suffix) {
    auto const from = pathOf(currentM.name);
    auto const to = moveCurrent(suffix);
    if (!to.empty()) {
        report(makeStatus(BAS::Status::info, {}, "MSG_INPUT_DONE", {from.string(), to.string()}));
    } else if (hasEntry(from)) {
        ++failedFilesM;
        report(makeStatus(BAS::Status::warning, {}, "ERR_INPUT_REPLACED", {from.string()}));
        list(); // with the other file
    } else {
        failOnce(currentM.name,
                 makeStatus(BAS::Status::warning, {}, "ERR_INPUT_VANISHED", {from.string()}));
    }
    currentM = {};
    try {
        stateFileM.clear();
    } catch (BAS::Status const& status) {
        fail(status);
    }
}

// Returns its new path, which is empty when it has vanished or another file has taken its place:
// that one is left there, or brought back when it came at the last moment.
std::filesystem::path InputDirectory::moveCurrent(std::string const& suffix) const {
    auto const from = pathOf(currentM.name);
    if (!isSame(from, currentFileM)) {
        return {};
    }
    auto to = doneM / (currentM.doneName + suffix);
    int error = renameToNew(from, to);
    while (error == EEXIST) {
        to = doneM / (freeDoneName(currentM.name) + suffix);
        error = renameToNew(from, to);
    }
    if (error == 0) {
        if (isSame(to, currentFileM)) {
            return to;
        }
        error = renameToNew(to, from);
    }
    if (error != 0 && error != ENOENT) {
        throw makeStatus(BAS::Status::critical, {}, "ERR_FILE_NOT_MOVED",
                         {from.string(), to.string(), std::generic_category().message(error)});
    }
    return {};
}

void InputDirectory::failOnce(std::string const& name, BAS::Status status) {
    ++failedFilesM;
    if (auto const changed = timeOfChange(pathOf(name)); changed != 0) {
        passedByM[name] = changed;
    }
    report(std::move(status));
}

void InputDirectory::report(BAS::Status status) {
    status.setObjectName(pipelineM);
    logM.write(status);
}

// Only the first failure is reported.
void InputDirectory::fail(BAS::Status const& status) {
    if (!hasFailedM) {
        report(status);
    }
    hasFailedM = true;
}

} // namespace host
