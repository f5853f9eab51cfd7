#include "base/LogFile.h"

#include "base/EscapedText.h"
#include "base/Failures.h"
#include "base/MessageCatalogue.h"
#include "base/Terminal.h"
#include "base/TimeText.h"

#include <fcntl.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace host {

namespace {

constexpr std::array<std::string_view, 6> levels = {"debug",   "info",  "notice",
                                                    "warning", "error", "critical"};

// The X of "<root>.Pipelines.X...".
std::string pipelineOf(BAS::String const& object) {
    auto const parts = object.split('.');
    return parts.entries() > 2 && parts[1] == "Pipelines" ? parts[2].str() : std::string("-");
}

} // namespace

LogFile::LogFile(BAS::Status::Severity least) : leastM(least), isTerminalM(canEraseTerminalLine()) {
}

LogFile::LogFile(std::filesystem::path const& file, BAS::Status::Severity least)
    : fileM(::open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0640)), leastM(least) {
    if (!fileM.isOpen()) {
        throw fileStatus("ERR_FILE_NOT_WRITABLE", file, errno);
    }
}

void LogFile::write(BAS::Status const& status) {
    if (status.severity() < leastM) {
        return;
    }
    std::lock_guard const guard(lockM);
    auto const record = (isTerminalM ? eraseTerminalLine : "") +
                        logRecord(status, std::chrono::system_clock::now());
    if (!writeAll(fileM.isOpen() ? fileM.number() : STDERR_FILENO, record)) {
        hasFailedM = true;
    }
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
    auto const& object = status.objectName();
    return fmt::format("{} {} {} {} {} {}\n", timeText(time), levelName(status.severity()),
                       printable(pipelineOf(object)),
                       object.isNull() ? "-" : printable(object.view()),
                       printable(status.messageName().view()), printable(messageText(status)));
}

} // namespace host
