#include "RejectFile.h"

#include "SystemError.h"

#include <fcntl.h>

namespace host {

RejectFile::RejectFile(std::filesystem::path file) : fileM(std::move(file)) {
    std::error_code error;
    std::filesystem::remove(fileM, error);
    if (error) {
        throw fileStatus("ERR_FILE_NOT_WRITABLE", fileM, error.value());
    }
}

void RejectFile::append(std::string_view bytes) {
    if (!descriptorM.isOpen()) {
        descriptorM =
            FileDescriptor(::open(fileM.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    }
    if (!descriptorM.isOpen() || !writeAll(descriptorM.number(), bytes)) {
        throw fileStatus("ERR_FILE_NOT_WRITABLE", fileM, errno);
    }
}

} // namespace host
