#include "base/PrivateDirectory.h"

#include "base/Failures.h"

#include <cstdlib>

namespace host {

namespace {

// It needn't exist: somebody may remove it while the host runs.
std::filesystem::path temporaryDirectory() {
    char const* const given = std::getenv("TMPDIR");
    return given == nullptr || *given == '\0' ? "/tmp" : given;
}

} // namespace

PrivateDirectory::PrivateDirectory() {
    auto const parent = temporaryDirectory();
    auto name = (parent / "pipeline-host-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) {
        throw fileStatus("ERR_DIRECTORY_NOT_USABLE", parent, errno);
    }
    pathM = name;
}

void PrivateDirectory::remove() const noexcept {
    std::error_code error;
    std::filesystem::remove_all(pathM, error);
}

} // namespace host
