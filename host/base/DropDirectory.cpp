#include "base/DropDirectory.h"

#include "base/Failures.h"

#include <fcntl.h>
#include <sys/file.h>

#include <algorithm>
#include <array>

namespace host {

namespace {

constexpr std::array<std::string_view, 2> incompleteSuffixes = {".tmp", ".part"};

bool isCompleteName(std::string_view name) {
    return !name.starts_with('.') &&
           std::none_of(incompleteSuffixes.begin(), incompleteSuffixes.end(),
                        [&](std::string_view suffix) { return name.ends_with(suffix); });
}

// Keeps other processes away as long as the descriptor is open.
FileDescriptor lockDirectory(std::filesystem::path const& directory) {
    FileDescriptor descriptor(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!descriptor.isOpen()) {
        throw fileStatus("ERR_DIRECTORY_NOT_USABLE", directory, errno);
    }
    if (::flock(descriptor.number(), LOCK_EX | LOCK_NB) != 0) {
        throw makeStatus(BAS::Status::critical, {}, "ERR_DIRECTORY_IN_USE", {directory.string()});
    }
    return descriptor;
}

std::vector<std::string> entriesOf(std::filesystem::path const& directory, std::string_view suffix,
                                   bool (*isWanted)(std::filesystem::file_type)) {
    std::vector<std::string> names;
    std::error_code error;
    std::filesystem::directory_iterator entry(directory, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        auto name = entry->path().filename().string();
        std::error_code gone; // files may vanish
        if (name.ends_with(suffix) && isCompleteName(name) &&
            isWanted(entry->symlink_status(gone).type())) {
            names.push_back(std::move(name));
        }
    }
    if (error) {
        throw fileStatus("ERR_DIRECTORY_NOT_USABLE", directory, error.value());
    }
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace

std::vector<std::string> completeFiles(std::filesystem::path const& directory,
                                       std::string_view suffix) {
    return entriesOf(directory, suffix,
                     [](auto type) { return type == std::filesystem::file_type::regular; });
}

bool hasEntry(std::filesystem::path const& path) {
    return ::faccessat(AT_FDCWD, path.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) == 0;
}

void DropDirectory::requireUsable(std::filesystem::path const& directory) {
    std::error_code error;
    if (std::filesystem::exists(directory, error) &&
        !std::filesystem::is_directory(directory, error)) {
        throw fileStatus("ERR_DIRECTORY_NOT_USABLE", directory, ENOTDIR);
    }
    if (::faccessat(AT_FDCWD, directory.c_str(), R_OK | W_OK | X_OK, AT_EACCESS) != 0) {
        throw fileStatus("ERR_DIRECTORY_NOT_USABLE", directory, errno);
    }
}

DropDirectory::DropDirectory(std::filesystem::path directory, Lock lock)
    : pathM(std::move(directory)),
      lockM(lock == Lock::held ? lockDirectory(pathM) : FileDescriptor()), changesM(pathM) {
}

std::vector<std::string> DropDirectory::strangeEntries(std::string_view suffix) const {
    return entriesOf(pathM, suffix, [](auto type) {
        using std::filesystem::file_type;
        return type != file_type::regular && type != file_type::directory &&
               type != file_type::not_found;
    });
}

} // namespace host
