#include "base/LogFile.h"

#include "base/EscapedText.h"
#include "base/Failures.h"
#include "base/MessageCatalogue.h"
#include "base/Terminal.h"
#include "base/TimeText.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstdlib>

namespace host {

namespace {

constexpr std::array<std::string_view, 6> levels = {"debug",   "info",  "notice",
                                                    "warning", "error", "critical"};

// The X of "<root>.Pipelines.X...".
std::string pipelineOf(BAS::String const& object) {
    auto const parts = object.split('.');
    return parts.entries() > 2 && parts[1] == "Pipelines" ? parts[2].str() : std::string("-");
}

FileDescriptor openForAppending(std::filesystem::path const& file) {
    return FileDescriptor(::open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0640));
}

// The service manager names the device and the inode of what it connected to the journal.
bool isStandardErrorTheJournal() {
    char const* const stream = std::getenv("JOURNAL_STREAM");
    struct stat found = {};
    return stream != nullptr && ::fstat(STDERR_FILENO, &found) == 0 &&
           stream == fmt::format("{}:{}", found.st_dev, found.st_ino);
}

// Pipeline or "-", object or "-", message name and text, with the line end.
std::string recordBody(BAS::Status const& status) {
    auto const& object = status.objectName();
    return fmt::format("{} {} {} {}\n", printable(pipelineOf(object)),
                       object.isNull() ? "-" : printable(object.view()),
                       printable(status.messageName().view()), printable(messageText(status)));
}

} // namespace

LogFile::LogFile(BAS::Status::Severity least)
    : leastM(least), isTerminalM(canEraseTerminalLine()), isJournalM(isStandardErrorTheJournal()) {
}

LogFile::LogFile(std::filesystem::path const& file, BAS::Status::Severity least)
    : pathM(file), fileM(openForAppending(file)), leastM(least) {
    if (!fileM.isOpen()) {
        throw fileStatus("ERR_FILE_NOT_WRITABLE", file, errno);
    }
}

void LogFile::write(BAS::Status const& status) {
    if (status.severity() < leastM) {
        return;
    }
    std::lock_guard const guard(lockM);
    if (!writeAll(fileM.isOpen() ? fileM.number() : STDERR_FILENO, text(status))) {
        hasFailedM = true;
    }
}

void LogFile::reopen() {
    if (pathM.empty()) {
        return;
    }
    auto opened = openForAppending(pathM);
    if (!opened.isOpen()) {
        write(fileStatus("ERR_FILE_NOT_WRITABLE", pathM, errno));
        return;
    }
    std::lock_guard const guard(lockM);
    fileM = std::move(opened);
}

std::string LogFile::text(BAS::Status const& status) const {
    return isJournalM ? journalRecord(status)
                      : (isTerminalM ? eraseTerminalLine : "") +
                            logRecord(status, std::chrono::system_clock::now());
}

std::span<std::string_view const> levelNames() {
    return levels;
}

std::optional<BAS::Status::Severity> levelOfName(std::string_view name) {
    auto const found = std::find(levels.begin(), levels.end(), name);
    return found == levels.end()
               ? std::nullopt
               : std::optional(static_cast<BAS::Status::Severity>(found - levels.begin()));
}

// A plug-in may pass a severity code that has no name.
std::string levelName(BAS::Status::Severity level) {
    auto const code = static_cast<std::size_t>(level);
    return code < levels.size() ? std::string(levels[code]) : fmt::format("level-{}", code);
}

std::string logRecord(BAS::Status const& status, std::chrono::system_clock::time_point time) {
    return fmt::format("{} {} {}", timeText(time), levelName(status.severity()),
                       recordBody(status));
}

std::string journalRecord(BAS::Status const& status) {
    // From debug to critical; a level that has no name counts as an error.
    static constexpr std::array priorities = {7, 6, 5, 4, 3, 2};
    auto const code = static_cast<std::size_t>(status.severity());
    return fmt::format("<{}>{}", code < priorities.size() ? priorities[code] : 3,
                       recordBody(status));
}

} // namespace host
