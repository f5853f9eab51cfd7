#include "commands/CommandInlet.h"

#include "base/DropDirectory.h"
#include "base/Failures.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace host {

namespace {

constexpr char const* dropName = "drop";
constexpr char const* answersName = "answers";

// What a directory of the group allows. Files that are made there get its group.
struct GroupMode {
    mode_t needed;
    mode_t forbidden;
    char const* advised;
};
// Who can't read it can't lock it either, which would keep the host from starting.
constexpr GroupMode passable = {S_ISGID | S_IXGRP, S_IRGRP | S_IWGRP | S_IWOTH, "2710"};
constexpr GroupMode writable = {S_ISGID | S_IRWXG, S_IWOTH, "3770"};
constexpr GroupMode readable = {S_ISGID | S_IRGRP | S_IXGRP, S_IWGRP | S_IWOTH, "2750"};

gid_t groupNumber(std::string const& name) {
    auto const* const group = ::getgrnam(name.c_str());
    if (group == nullptr) {
        throw makeStatus(BAS::Status::critical, {}, "ERR_GROUP_NOT_USABLE",
                         {name, "there is no such group"});
    }
    return group->gr_gid;
}

std::string groupName(gid_t number) {
    auto const* const group = ::getgrgid(number);
    return group == nullptr ? std::to_string(number) : group->gr_name;
}

bool isMember(gid_t group) {
    std::vector<gid_t> groups(static_cast<std::size_t>(std::max(::getgroups(0, nullptr), 0)));
    auto const count = ::getgroups(static_cast<int>(groups.size()), groups.data());
    groups.resize(static_cast<std::size_t>(std::max(count, 0)));
    return ::geteuid() == 0 || ::getegid() == group ||
           std::find(groups.begin(), groups.end(), group) != groups.end();
}

struct stat statusOf(std::filesystem::path const& directory) {
    DropDirectory::requireUsable(directory);
    struct stat found = {};
    if (::stat(directory.c_str(), &found) != 0) {
        throw fileStatus("ERR_DIRECTORY_NOT_USABLE", directory, errno);
    }
    return found;
}

std::string modeText(struct stat const& found) {
    return fmt::format("{:04o}", found.st_mode & 07777);
}

void requirePrivate(std::filesystem::path const& directory) {
    auto const found = statusOf(directory);
    bool const isOwnersOnly = (found.st_mode & (S_IWGRP | S_IWOTH)) == 0;
    if (!isOwnersOnly || (found.st_uid != ::geteuid() && found.st_uid != 0)) {
        throw makeStatus(BAS::Status::critical, {}, "ERR_DIRECTORY_NOT_PRIVATE",
                         {directory.string(), std::to_string(found.st_uid), modeText(found),
                          std::to_string(::geteuid())});
    }
}

void requireShared(std::filesystem::path const& directory, gid_t group, GroupMode const& mode) {
    auto const found = statusOf(directory);
    // In a sticky directory, files of others can be removed by its owner only.
    bool const isOwned =
        found.st_uid == ::geteuid() || (found.st_uid == 0 && (found.st_mode & S_ISVTX) == 0);
    if (!isOwned || found.st_gid != group || (found.st_mode & mode.needed) != mode.needed ||
        (found.st_mode & mode.forbidden) != 0) {
        throw makeStatus(BAS::Status::critical, {}, "ERR_DIRECTORY_NOT_FOR_GROUP",
                         {directory.string(), groupName(group), std::to_string(::geteuid()),
                          mode.advised, std::to_string(found.st_uid), groupName(found.st_gid),
                          modeText(found)});
    }
}

CommandInlet ownInlet(HostConfiguration const& configuration) {
    return {*configuration.commandDirectory, *configuration.commandDirectory, std::nullopt};
}

CommandInlet groupInlet(HostConfiguration const& configuration) {
    auto const& directory = *configuration.commandDirectory;
    return {directory / dropName, directory / answersName,
            ReportRoom{*configuration.groupReports, groupNumber(configuration.commandGroup)}};
}

bool hasGroup(HostConfiguration const& configuration) {
    return configuration.groupReports && !configuration.commandGroup.empty();
}

} // namespace

std::vector<CommandInlet> commandInlets(HostConfiguration const& configuration) {
    std::vector<CommandInlet> inlets;
    if (configuration.commandDirectory) {
        inlets.push_back(ownInlet(configuration));
        if (hasGroup(configuration)) {
            inlets.push_back(groupInlet(configuration));
        }
    }
    return inlets;
}

CommandInlet inletOfCaller(HostConfiguration const& configuration) {
    auto own = ownInlet(configuration);
    bool const isOwn = ::faccessat(AT_FDCWD, own.directory.c_str(), W_OK, AT_EACCESS) == 0;
    return isOwn || !hasGroup(configuration) ? own : groupInlet(configuration);
}

void requireSafe(CommandInlet const& inlet) {
    if (!inlet.isOfGroup()) {
        requirePrivate(inlet.directory);
        return;
    }
    auto const group = inlet.room->group;
    if (!isMember(group)) {
        throw makeStatus(BAS::Status::critical, {}, "ERR_GROUP_NOT_USABLE",
                         {groupName(group), fmt::format("the user of the host, which is {} here, "
                                                        "isn't one of its members",
                                                        ::geteuid())});
    }
    requireShared(inlet.directory.parent_path(), group, passable);
    requireShared(inlet.directory, group, writable);
    requireShared(inlet.answers, group, readable);
    requireShared(inlet.room->directory, group, readable);
}

} // namespace host
