#include "input/RejectFile.h"

#include "base/Failures.h"

#include <fcntl.h>

#include <algorithm>

namespace host {

RejectFile::RejectFile(std::filesystem::path file, std::uint64_t keptBytes)
    : fileM(std::move(file)) {
    std::error_code error;
    if (keptBytes == 0) {
        std::filesystem::remove(fileM, error);
    } else if (std::filesystem::exists(fileM, error)) {
        sizeM = std::min<std::uint64_t>(keptBytes, std::filesystem::file_size(fileM, error));
        std::filesystem::resize_file(fileM, sizeM, error);
    }
    if (error) {
        throw fileStatus("ERR_FILE_NOT_WRITABLE", fileM, error.value());
    }
}

void RejectFile::append(std::string_view bytes) {
    if (!descriptorM.isOpen()) {
        descriptorM =
            FileDescriptor(::open(fileM.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644));
    }
    if (!descriptorM.isOpen() || !writeAll(descriptorM.number(), bytes)) {
        throw fileStatus("ERR_FILE_NOT_WRITABLE", fileM, errno);
    }
    sizeM += bytes.size();
}

} // namespace host
