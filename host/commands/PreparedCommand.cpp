#include "commands/PreparedCommand.h"

#include "base/EscapedText.h"
#include "base/Failures.h"
#include "base/MessageCatalogue.h"
#include "base/WholeFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
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

// With any "..", which leads elsewhere when it comes after a link.
std::filesystem::path absolutePath(std::string const& text) {
    std::error_code error;
    return std::filesystem::absolute(text, error);
}

FileDescriptor openDirectory(int at, std::filesystem::path const& directory, int flags = 0) {
    return FileDescriptor(
        ::openat(at, directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | flags));
}

Place openPlace(std::string const& key, std::string const& text) {
    Place place;
    place.path = absolutePath(text);
    auto const directory = place.path.parent_path();
    place.directory = openDirectory(AT_FDCWD, directory);
    if (!place.directory.isOpen()) {
        refuse(key, place.path,
               errno == ENOENT ? fmt::format("the directory '{}' doesn't exist", directory.string())
                               : fmt::format("the directory '{}' can't be used: {}",
                                             directory.string(), errorText()));
    }
    return place;
}

// Whatever stands in the text, the place is below the room, and no link leads there.
Place openPlaceIn(ReportRoom const& room, std::string const& key, std::string const& text) {
    std::filesystem::path const given(text);
    auto const relative = given.is_absolute() ? given.lexically_relative(room.directory) : given;
    auto const expected =
        fmt::format("expected a path below '{}' without '..'", room.directory.string());
    if (relative.empty() || std::find(relative.begin(), relative.end(), "..") != relative.end()) {
        refuse(key, given, expected);
    }
    Place place;
    place.path = (room.directory / relative).lexically_normal();
    place.directory = openDirectory(AT_FDCWD, room.directory);
    auto const below = place.path.lexically_relative(room.directory);
    for (auto const& part : below.parent_path()) {
        if (place.directory.isOpen()) {
            place.directory = openDirectory(place.directory.number(), part, O_NOFOLLOW);
        }
    }
    if (!place.directory.isOpen()) {
        refuse(key, place.path,
               fmt::format("its directory can't be used: {}; {} that leads through no links",
                           errorText(), expected));
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
    : commandM(command), updateM(command.update.name()) {
    for (auto const& key : command.update.children()) {
        try {
            updateM.add(key->name(), prepare(key->name().str(), key->value().str()));
        } catch (CommandRefused& refused) {
            refused.setCollected(command.room != nullptr || isCollected(key->value().view()));
            throw;
        }
    }
}

std::string PreparedCommand::prepare(std::string const& key, std::string const& value) {
    if (value.find('\0') != std::string::npos) {
        refuse(key, value.substr(0, value.find('\0')), "a path can't hold the character U+0000");
    }
    if (value == senderValue) {
        return collect(key, pathForSender(key), Wish::forSender);
    }
    if (value == "@") {
        refuse(key, value,
               "expected a path after '@', '@-' for the sender, or '@@' for a text that begins "
               "with '@'");
    }
    auto const text = value.starts_with('@') ? value.substr(1) : value;
    if (isCollected(value)) {
        return collect(key, text, Wish::file);
    }
    bool const isConfined = commandM.room != nullptr && !text.empty();
    return isConfined ? collect(key, text, Wish::unknown) : checkedPlain(key, text);
}

std::string PreparedCommand::pathForSender(std::string const& key) const {
    if (!commandM.reportForSender) {
        refuse(key, senderValue, "nobody waits for the report");
    }
    try {
        return commandM.reportForSender().string();
    } catch (BAS::Status const& status) {
        refuse(key, senderValue, messageText(status));
    }
}

std::string PreparedCommand::collect(std::string const& key, std::string const& path, Wish wish) {
    if (wish == Wish::file && hasControlCharacter(path)) {
        refuse(key, path, "the path has a control character, expected none");
    }
    auto const* const room = wish == Wish::forSender ? nullptr : commandM.room;
    auto place = room == nullptr ? openPlace(key, path) : openPlaceIn(*room, key, path);
    requireReplaceable(key, place);
    if (collectedM.size() == mostReports) {
        refuse(key, place.path, fmt::format("a command has at most {} reports", mostReports));
    }
    try {
        auto file = std::make_unique<TemporaryFile>(std::move(place.directory), place.path);
        if (room != nullptr) {
            file->setOwner(::geteuid(), room->group);
        }
        auto report = std::make_unique<CollectedReport>(std::move(file));
        auto given = report->path().string();
        collectedM.push_back(
            {key, place.path, path.find('/') != std::string::npos, wish, std::move(report)});
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
        bool const isText = each.wish == Wish::unknown && !outcome.isOpened;
        if (isText && !each.looksLikePath) {
            continue;
        }
        NamedFile file;
        file.key = each.key;
        file.path = each.place;
        file.isOpened = outcome.isOpened;
        file.size = outcome.size;
        file.completeness = outcome.isWhole ? Completeness::whole
                            : isText        ? Completeness::unknown
                                            : Completeness::cut;
        file.reason = outcome.reason;
        file.hasFailed = !outcome.isWhole && !isText;
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
