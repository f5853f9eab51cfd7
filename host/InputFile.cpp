#include "InputFile.h"

#include "SystemError.h"

#include <fcntl.h>

namespace host {

InputFile::InputFile(std::filesystem::path file)
    : fileM(std::move(file)),
      descriptorM(fileM == "-" ? ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                               : ::open(fileM.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (!descriptorM.isOpen()) {
        throw fileStatus("ERR_FILE_NOT_READABLE", fileM, errno);
    }
}

std::size_t InputFile::read(std::span<char> target) {
    for (;;) {
        auto const count = ::read(descriptorM.number(), target.data(), target.size());
        if (count >= 0) {
            return static_cast<std::size_t>(count);
        }
        if (errno != EINTR) {
            throw fileStatus("ERR_FILE_NOT_READABLE", fileM, errno);
        }
    }
}

} // namespace host
