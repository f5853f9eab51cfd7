#include "program/RereadableFile.h"

#include "text/InputFile.h"
#include "text/Output.h"

#include <vector>

namespace reader {

RereadableFile::RereadableFile(std::string const& name) : nameM(name), pathM(name) {
    if (!isRereadable(name)) {
        keep();
    }
}

void RereadableFile::keep() {
    InputFile input(nameM);
    keptM.reset(std::tmpfile());
    bool isKept = keptM != nullptr;
    std::vector<char> piece(std::size_t{1} << 16U);
    for (std::size_t size = 0; isKept && (size = input.read(piece.data(), piece.size())) > 0;) {
        isKept = std::fwrite(piece.data(), 1, size, keptM.get()) == size;
    }
    if (!isKept || std::fflush(keptM.get()) != 0) {
        throw OutputError(input.name() + ": can't be kept in a temporary file");
    }
    pathM = fmt::format("/dev/fd/{}", ::fileno(keptM.get()));
}

} // namespace reader
