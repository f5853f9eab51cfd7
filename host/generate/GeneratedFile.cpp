#include "generate/GeneratedFile.h"

#include "base/Failures.h"

#include <fcntl.h>

namespace host {

namespace {

constexpr std::size_t pieceSize = std::size_t{1} << 20U;

} // namespace

GeneratedFile::GeneratedFile(std::filesystem::path file)
    : fileM(std::move(file)),
      descriptorM(::open(fileM.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644)) {
    if (!descriptorM.isOpen()) {
        throw fileStatus("ERR_FILE_NOT_WRITABLE", fileM, errno);
    }
}

void GeneratedFile::write(std::string_view text) {
    bufferM.append(text);
    writeFullBuffer();
}

void GeneratedFile::close() {
    writeBuffer();
}

void GeneratedFile::writeFullBuffer() {
    if (bufferM.size() >= pieceSize) {
        writeBuffer();
    }
}

void GeneratedFile::writeBuffer() {
    if (!writeAll(descriptorM.number(), {bufferM.data(), bufferM.size()})) {
        throw fileStatus("ERR_FILE_NOT_WRITABLE", fileM, errno);
    }
    bufferM.clear();
}

} // namespace host
