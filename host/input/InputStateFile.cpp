#include "input/InputStateFile.h"

#include "base/Failures.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <zlib.h>

#include <sstream>

namespace host {

namespace {

// Fits two file names of the greatest length, and one disk sector.
constexpr std::size_t recordSize = 1024;
constexpr char padding = '\n';
// Not allowed in a file name.
constexpr char nameEnd = '/';

// What stands after the state and tells whether it is as it was written.
std::string checkSumOf(std::string_view state) {
    auto const* const bytes = reinterpret_cast<Bytef const*>(state.data());
    return fmt::format("{:08x}", ::crc32_z(0, bytes, state.size()));
}

std::optional<InputState> parse(std::string const& record) {
    InputState state;
    std::istringstream text(record);
    auto& identity = state.identity;
    auto& position = state.position;
    text >> position.bytes >> position.rejectedBytes >> identity.inode >> identity.size >>
        identity.modified;
    text.ignore(1); // the blank before the names
    std::getline(text, state.name, nameEnd);
    std::getline(text, state.doneName, nameEnd);
    auto const end = text.tellg();
    std::string checkSum;
    text >> checkSum;
    if (!text || checkSum != checkSumOf(record.substr(0, static_cast<std::size_t>(end)))) {
        return std::nullopt;
    }
    return state;
}

FileIdentity identityOf(struct stat const& found) {
    return {found.st_ino, static_cast<std::uint64_t>(found.st_size),
            found.st_mtim.tv_sec * 1'000'000'000L + found.st_mtim.tv_nsec};
}

} // namespace

std::optional<FileIdentity> FileIdentity::of(std::filesystem::path const& file) {
    struct stat found = {};
    return ::lstat(file.c_str(), &found) == 0 ? std::optional(identityOf(found)) : std::nullopt;
}

std::optional<FileIdentity> FileIdentity::of(int descriptor) {
    struct stat found = {};
    return ::fstat(descriptor, &found) == 0 ? std::optional(identityOf(found)) : std::nullopt;
}

InputStateFile::InputStateFile(std::filesystem::path file)
    : fileM(std::move(file)),
      descriptorM(
          ::open(fileM.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0640)) {
    if (!descriptorM.isOpen()) {
        throw fileStatus("ERR_FILE_NOT_WRITABLE", fileM, errno);
    }
    struct stat found = {};
    if (::fstat(descriptorM.number(), &found) != 0 || !S_ISREG(found.st_mode) ||
        found.st_nlink > 1) {
        throw makeStatus(BAS::Status::critical, {}, "ERR_FILE_NOT_WRITABLE",
                         {fileM.string(), "expected a regular file with one name"});
    }
}

std::optional<InputState> InputStateFile::read() const {
    std::string record(recordSize, padding);
    auto const count = ::pread(descriptorM.number(), record.data(), record.size(), 0);
    record.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
    return parse(record);
}

void InputStateFile::write(InputState const& state) {
    auto const text =
        fmt::format("{} {} {} {} {} {}{}{}{}", state.position.bytes, state.position.rejectedBytes,
                    state.identity.inode, state.identity.size, state.identity.modified, state.name,
                    nameEnd, state.doneName, nameEnd);
    writeRecord(text + checkSumOf(text));
}

void InputStateFile::clear() {
    writeRecord({});
}

void InputStateFile::writeRecord(std::string record) {
    record.resize(recordSize, padding);
    auto const written = ::pwrite(descriptorM.number(), record.data(), record.size(), 0);
    if (written != static_cast<ssize_t>(record.size())) {
        throw fileStatus("ERR_FILE_NOT_WRITABLE", fileM, written < 0 ? errno : ENOSPC);
    }
}

} // namespace host
