#include "base/PrivateDirectory.h"

#include "base/Failures.h"

#include <cstdlib>

namespace host {

PrivateDirectory::PrivateDirectory() {
    auto name = (std::filesystem::temp_directory_path() / "pipeline-host-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) {
        throw fileStatus("ERR_DIRECTORY_NOT_USABLE", name, errno);
    }
    pathM = name;
}

void PrivateDirectory::remove() const noexcept {
    std::error_code error;
    std::filesystem::remove_all(pathM, error);
}

} // namespace host
