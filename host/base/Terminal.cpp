#include "base/Terminal.h"

#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace host {

bool canEraseTerminalLine() {
    auto const* const terminal = std::getenv("TERM");
    bool const canErase = terminal == nullptr || terminal != std::string_view("dumb");
    return canErase && ::isatty(STDERR_FILENO) == 1;
}

} // namespace host
