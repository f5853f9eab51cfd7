#include "commands/PreparedCommand.h"

#include "base/Failures.h"
#include "base/MessageCatalogue.h"
#include "base/WholeFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <system_error>

namespace host {

namespace {

// A file by its directory, which is open, and its own name.
struct Place {
    FileDescriptor directory;
    std::filesystem::path path; // absolute
};

bool isCollected(std::string_view value) {
    return value.starts_with('@') && !value.starts_with("@@");
}

[[noreturn]] void refuse(std::string const& key, std::filesystem::path const& path,
                         std::string const& reason) {
    NamedFile file;
    file.key = key;
    file.path = path;
    file.reason = reason;
    file.hasFailed = true;
    throw CommandRefused(fmt::format("'{}' names '{}': {}", key, path.string(), reason), file);
}

std::string errorText() {
    return std::generic_category().message(errno);
}

std::filesystem::path absolutePath(std::string const& text) {
    std::error_code error;
    return std::filesystem::absolute(text, error).lexically_normal();
}

Place openPlace(std::string const& key, std::string const& text) {
    Place place;
    place.path = absolutePath(text);
    auto const directory = place.path.parent_path();
    place.directory = FileDescriptor(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!place.directory.isOpen()) {
        refuse(key, place.path,
               errno == ENOENT ? fmt::format("the directory '{}' doesn't exist", directory.string())
                               : fmt::format("the directory '{}' can't be used: {}",
                                             directory.string(), errorText()));
    }
    return place;
}

// A file that is renamed there would take the place of whatever is there.
void requireReplaceable(std::string const& key, Place const& place) {
    if (!place.path.has_filename()) {
        refuse(key, place.path, "expected the path of a file");
    }
    struct stat found = {};
    if (::fstatat(place.directory.number(), place.path.filename().c_str(), &found,
                  AT_SYMLINK_NOFOLLOW) != 0) {
        if (errno != ENOENT) {
            refuse(key, place.path, errorText());
        }
    } else if (!S_ISREG(found.st_mode)) {
        refuse(key, place.path,
               fmt::format("{}, expected a regular file or none", fileKindName(found.st_mode)));
    }
}

} // namespace

PreparedCommand::PreparedCommand(Command const& command)
    : reportForSenderM(command.reportForSender), updateM(command.update.name()) {
    for (auto const& key : command.update.children()) {
        try {
            updateM.add(key->name(), prepare(key->name().str(), key->value().str()));
        } catch (CommandRefused& refused) {
            refused.setCollected(isCollected(key->value().view()));
            throw;
        }
    }
}

std::string PreparedCommand::prepare(std::string const& key, std::string const& value) {
    if (value.find('\0') != std::string::npos) {
        refuse(key, value.substr(0, value.find('\0')), "a path can't hold the character U+0000");
    }
    if (value == senderValue) {
        if (!reportForSenderM) {
            refuse(key, value, "nobody waits for the report");
        }
        return collect(key, reportForSenderM().string());
    }
    if (value == "@") {
        refuse(key, value,
               "expected a path after '@', '@-' for the sender, or '@@' for a text that begins "
               "with '@'");
    }
    if (value.starts_with("@@")) {
        return checkedPlain(key, value.substr(1));
    }
    return isCollected(value) ? collect(key, value.substr(1)) : checkedPlain(key, value);
}

std::string PreparedCommand::collect(std::string const& key, std::string const& path) {
    auto place = openPlace(key, path);
    requireReplaceable(key, place);
    try {
        auto report = std::make_unique<CollectedReport>(
            std::make_unique<TemporaryFile>(std::move(place.directory), place.path));
        auto given = report->path().string();
        collectedM.push_back({key, place.path, std::move(report)});
        return given;
    } catch (BAS::Status const& status) {
        refuse(key, place.path, messageText(status));
    }
}

std::string PreparedCommand::checkedPlain(std::string const& key, std::string const& text) {
    if (text.empty()) {
        return text;
    }
    if (auto const obstacle = openingObstacle(text)) {
        refuse(key, absolutePath(text),
               fmt::format("{}, expected a regular file or none", *obstacle));
    }
    plainM.push_back({key, text});
    return text;
}

std::vector<NamedFile> PreparedCommand::finish(std::string const& objection) {
    std::vector<NamedFile> files;
    for (auto const& each : collectedM) {
        auto const outcome = each.report->finish(objection);
        NamedFile file;
        file.key = each.key;
        file.path = each.place;
        file.isOpened = outcome.isOpened;
        file.size = outcome.size;
        file.completeness = outcome.isWhole ? Completeness::whole : Completeness::cut;
        file.reason = outcome.reason;
        file.hasFailed = !outcome.isWhole;
        files.push_back(std::move(file));
    }
    return files;
}

void PreparedCommand::removeTraces() noexcept {
    for (auto const& each : collectedM) {
        each.report->removeTraces();
    }
}

} // namespace host
