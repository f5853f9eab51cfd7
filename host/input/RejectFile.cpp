#include "input/RejectFile.h"

#include "base/Failures.h"

#include <fcntl.h>

#include <algorithm>

namespace host {

namespace {

std::optional<struct stat> statusOf(InputConfiguration const& input) {
    struct stat found = {};
    int const error =
        input.descriptor ? ::fstat(*input.descriptor, &found) : ::stat(input.file.c_str(), &found);
    return error == 0 && input.file != "-" ? std::optional(found) : std::nullopt;
}

} // namespace

RejectFile::RejectFile(InputConfiguration const& input, std::uint64_t keptBytes)
    : fileM(input.rejectFile), inputM(statusOf(input)) {
    if (keptBytes == 0) {
        if (::unlink(fileM.c_str()) != 0 && errno != ENOENT) {
            throw fileStatus("ERR_FILE_NOT_WRITABLE", fileM, errno);
        }
        return;
    }
    descriptorM = FileDescriptor(
        ::open(fileM.c_str(), O_WRONLY | O_APPEND | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!descriptorM.isOpen() && errno == ENOENT) {
        return;
    }
    struct stat found = {};
    if (!descriptorM.isOpen() || ::fstat(descriptorM.number(), &found) != 0) {
        throw fileStatus("ERR_FILE_NOT_WRITABLE", fileM, errno);
    }
    if (!S_ISREG(found.st_mode) || found.st_nlink > 1) { // perhaps somebody else's, not to be cut
        throw makeStatus(BAS::Status::critical, {}, "ERR_FILE_NOT_WRITABLE",
                         {fileM.string(), "expected a regular file with one name"});
    }
    sizeM = std::min(keptBytes, static_cast<std::uint64_t>(found.st_size));
    if (::ftruncate(descriptorM.number(), static_cast<off_t>(sizeM)) != 0) {
        throw fileStatus("ERR_FILE_NOT_WRITABLE", fileM, errno);
    }
}

void RejectFile::append(std::string_view bytes) {
    if (!descriptorM.isOpen()) {
        open();
    }
    if (!writeAll(descriptorM.number(), bytes)) {
        throw fileStatus("ERR_FILE_NOT_WRITABLE", fileM, errno);
    }
    sizeM += bytes.size();
}

void RejectFile::open() {
    descriptorM = FileDescriptor(::open(
        fileM.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_APPEND | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!descriptorM.isOpen()) {
        throw fileStatus("ERR_FILE_NOT_WRITABLE", fileM, errno);
    }
    allowWhatTheInputAllows();
}

// The group reads the rejects only if it reads the input.
void RejectFile::allowWhatTheInputAllows() const {
    if (inputM) {
        static_cast<void>(::fchown(descriptorM.number(), static_cast<uid_t>(-1), inputM->st_gid) ==
                          0);
    }
    struct stat own = {};
    if (::fstat(descriptorM.number(), &own) != 0) {
        return;
    }
    bool const mayGroupRead = !inputM || (inputM->st_mode & S_IROTH) != 0 ||
                              ((inputM->st_mode & S_IRGRP) != 0 && inputM->st_gid == own.st_gid);
    if (mayGroupRead) {
        ::fchmod(descriptorM.number(), 0640);
    }
}

} // namespace host
