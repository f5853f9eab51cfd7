#include "generate/GeneratedFile.h"

#include "base/Failures.h"

#include <fcntl.h>

namespace host {

GeneratedFile::GeneratedFile(std::filesystem::path file)
    : fileM(std::move(file)),
      descriptorM(::open(fileM.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666)) {
    if (!descriptorM.isOpen()) {
        throw fileStatus("ERR_FILE_NOT_WRITABLE", fileM, errno);
    }
}

void GeneratedFile::close() {
    writeBuffer();
}

void GeneratedFile::writeBuffer() {
    if (!writeAll(descriptorM.number(), {bufferM.data(), bufferM.size()})) {
        throw fileStatus("ERR_FILE_NOT_WRITABLE", fileM, errno);
    }
    bufferM.clear();
}

} // namespace host
