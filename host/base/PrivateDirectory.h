// A directory for temporary files that nobody else can enter, in that of the environment variable
// TMPDIR or in /tmp. It goes with all that is in it.
#pragma once

#include <filesystem>

namespace host {

class PrivateDirectory {
public:
    // Throws a BAS::Status when it can't be made.
    PrivateDirectory();
    PrivateDirectory(PrivateDirectory const&) = delete;
    PrivateDirectory& operator=(PrivateDirectory const&) = delete;
    ~PrivateDirectory() { remove(); }

    std::filesystem::path const& path() const noexcept { return pathM; }
    // Any thread.
    void remove() const noexcept;

private:
    std::filesystem::path pathM;
};

} // namespace host
